#include "cli/HelpText.h"

namespace cli {
namespace {

bool takesSeveral(const CLI::Option *option)
{
    return option->get_expected_max() >= CLI::detail::expected_max_vector_size;
}

// The command as far as it was understood.
std::string understood(const CLI::App &app)
{
    std::string words = app.get_name();
    for (const CLI::App *command : app.get_subcommands())
        words += " " + understood(*command);
    return words;
}

const CLI::App *innermost(const CLI::App &app)
{
    const std::vector<CLI::App *> commands = app.get_subcommands();
    return commands.empty() ? &app : innermost(*commands.front());
}

bool wantsCommand(const CLI::App &app)
{
    return app.get_require_subcommand_min() > 0;
}

} // namespace

HelpText::HelpText()
{
    label("SUBCOMMAND", "COMMAND");
    label("Subcommands", "Commands");
}

std::string HelpText::make_option_opts(const CLI::Option *option) const
{
    if (option->get_type_size() == 0)
        return {};
    std::string text;
    // A type name may carry the names of its checks, which say the same in other words.
    const std::string type = option->get_type_name();
    const std::string name = type.substr(0, type.find(':'));
    if (!name.empty() && name != option->get_name())
        text += " " + name;
    if (takesSeveral(option))
        text += " ...";
    return text;
}

std::string usageFault(const CLI::App &app, const CLI::ParseError &error)
{
    const CLI::App *command = innermost(app);
    const std::vector<std::string> unknown = app.remaining(true);
    if (wantsCommand(*command) && !unknown.empty())
        return "There is no command \"" + understood(app) + " " + unknown.front() + "\"";
    if (wantsCommand(*command))
        return understood(app) + " wants a command";
    return error.what();
}

std::string whereToReadOn(const CLI::App &app)
{
    return "\"" + understood(app) + " --help\" shows how it is used.";
}

} // namespace cli
