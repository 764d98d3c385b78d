#include "cli/Parser.h"

#include "outcome/Failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace cli {
namespace {

// The name under which the library knows a parameter. It refuses some characters in the name of an
// argument, such as those of "FIELD=VALUE".
std::string nameOf(const Parameter &parameter)
{
    QString name = parameter.name;
    return parameter.isPositional() ? name.replace(QLatin1Char('='), QLatin1Char('_')).toStdString()
                                    : name.toStdString();
}

// All names of a parameter in the library: "-o,--output", or "FILE".
std::string namesOf(const Parameter &parameter)
{
    return parameter.shortName.isEmpty()
               ? nameOf(parameter)
               : parameter.shortName.toStdString() + ',' + nameOf(parameter);
}

void addParameter(CLI::App *app, const Parameter &parameter)
{
    if (parameter.isFlag()) {
        app->add_flag(namesOf(parameter))->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
        return;
    }
    CLI::Option *option = app->add_option(namesOf(parameter));
    option->expected(1, parameter.isRepeatable ? -1 : 1)
        ->allow_extra_args(parameter.isRepeatable)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void collect(const CLI::App *app, const QList<Parameter> &parameters, Arguments &arguments)
{
    for (const Parameter &parameter : parameters)
        for (const std::string &value : app->get_option(nameOf(parameter))->results())
            arguments.add(parameter.name, QByteArray::fromStdString(value));
}

// Gives a word to the next positional argument of the command that takes one.
void addArgument(ParsedLine &line, const QByteArray &word)
{
    const QList<Parameter> parameters =
        line.command ? line.command->parameters : QList<Parameter>();
    for (const Parameter &parameter : parameters) {
        const bool isFull =
            !parameter.isRepeatable && !line.arguments.values(parameter.name).isEmpty();
        if (parameter.isPositional() && !isFull) {
            line.arguments.add(parameter.name, word);
            return;
        }
    }
    line.unexpected.append(QString::fromUtf8(word));
}

} // namespace

Parser::Parser(const QList<Parameter> &common, const QList<Command> &commands)
    : m_common(common), m_commands(commands), m_app(std::make_unique<CLI::App>("", "progkeysctl"))
{
    m_app->set_help_flag();
    m_app->fallthrough();
    m_app->allow_extras();
    m_app->require_subcommand(0, 1);
    for (const Parameter &parameter : m_common)
        addParameter(m_app.get(), parameter);
    for (const Command &command : std::as_const(m_commands))
        addCommand(command);
}

Parser::~Parser() = default;

void Parser::addCommand(const Command &command)
{
    CLI::App *parent = m_app.get();
    for (const QString &word : command.words.mid(0, command.words.size() - 1))
        parent = parent->get_subcommand(word.toStdString());
    CLI::App *app = parent->add_subcommand(command.words.last().toStdString());
    app->require_subcommand(0, 1);
    for (const Parameter &parameter : command.parameters)
        addParameter(app, parameter);
}

ParsedLine Parser::parse(int argc, char **argv)
{
    // Words after "--" are passed on as they are; the library would change some.
    const int mark = static_cast<int>(std::find(argv, argv + argc, std::string("--")) - argv);
    try {
        m_app->parse(mark, argv);
    } catch (const CLI::ArgumentMismatch &error) {
        // The library's message is "--limit: ...".
        const QString option = QString::fromUtf8(error.what()).section(QLatin1Char(':'), 0, 0);
        throw Failure{ExitStatus::Usage, QStringLiteral("%1 requires a value").arg(option),
                      QStringLiteral("See \"progkeysctl --help\".")};
    }
    ParsedLine line;
    for (const std::string &word : m_app->remaining(true))
        line.unexpected.append(QString::fromStdString(word));
    collect(m_app.get(), m_common, line.arguments);
    for (const Command &command : std::as_const(m_commands)) {
        const CLI::App *app = appOf(command);
        if (!app->parsed())
            continue;
        line.command = &command;
        collect(app, command.parameters, line.arguments);
    }
    for (int i = mark + 1; i < argc; ++i)
        addArgument(line, argv[i]);
    return line;
}

CLI::App *Parser::appOf(const Command &command) const
{
    CLI::App *app = m_app.get();
    for (const QString &word : command.words)
        app = app->get_subcommand(word.toStdString());
    return app;
}

} // namespace cli
