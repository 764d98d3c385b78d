#include "completion/OptionShape.h"

namespace completion {

bool isPositional(const CLI::Option &option)
{
    return option.get_positional();
}

bool takesArgument(const CLI::Option &option)
{
    return option.get_type_size() > 0 && option.get_expected_min() > 0;
}

bool takesSeveral(const CLI::Option &option)
{
    return option.get_expected_max() >= CLI::detail::expected_max_vector_size;
}

std::string argumentName(const CLI::Option &option)
{
    const std::string type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

// A check for membership describes itself as {one,other}.
std::vector<std::string> choices(const CLI::Option &option)
{
    const std::string type = option.get_type_name();
    const std::size_t begin = type.find(":{");
    const std::size_t end = type.find('}', begin);
    if (begin == std::string::npos || end == std::string::npos)
        return {};
    return CLI::detail::split(type.substr(begin + 2, end - begin - 2), ',');
}

std::vector<std::string> typedNames(const CLI::Option &option)
{
    std::vector<std::string> names;
    for (const std::string &name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string &name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

std::vector<const CLI::App *> shownCommands(const CLI::App &group)
{
    return group.get_subcommands(
        [](const CLI::App *command) { return !command->get_group().empty(); });
}

const CLI::App *shownCommand(const CLI::App &group, const std::string &name)
{
    for (const CLI::App *command : shownCommands(group))
        if (command->get_name() == name)
            return command;
    return nullptr;
}

} // namespace completion
