#include "commands/Commands.h"

#include "cli/CommandLine.h"
#include "text/Format.h"

#include <QJsonArray>

namespace commands {
namespace {

QJsonObject toJson(const cli::Parameter &parameter)
{
    QStringList names = {parameter.name};
    if (!parameter.shortName.isEmpty())
        names.prepend(parameter.shortName);
    return {{"names"_s, QJsonArray::fromStringList(names)},
            {"value"_s, parameter.isFlag() ? QJsonValue() : QJsonValue(parameter.valueName)},
            {"required"_s, parameter.isRequired},
            {"repeatable"_s, parameter.isRepeatable},
            {"help"_s, parameter.help}};
}

QJsonArray toJson(const QList<cli::Parameter> &parameters, bool arePositional)
{
    QJsonArray array;
    for (const cli::Parameter &parameter : parameters)
        if (parameter.isPositional() == arePositional)
            array.append(toJson(parameter));
    return array;
}

// In JSON with all options and arguments, for programs that complete or document commands.
void listCommands(cli::Session &session)
{
    output::Listing listing;
    for (const cli::Command &command : all())
        if (!command.isGroup())
            listing.rows.append({{"command"_s, command.name()},
                                 {"summary"_s, command.summary},
                                 {"arguments"_s, toJson(command.parameters, true)},
                                 {"options"_s, toJson(command.parameters, false)},
                                 {"commonOptions"_s, toJson(cli::commonOptions(), false)}});
    session.out().list(listing);
}

void help(cli::Session &session, const cli::Arguments &arguments)
{
    if (arguments.has("--list"))
        listCommands(session);
    else
        cli::run(all(), arguments.values("COMMAND") << "--help");
}

} // namespace

cli::Command helpCommand()
{
    return cli::command(
        "help", "show help on a command",
        {cli::parameter("[COMMAND...]", "a command, such as key add"),
         cli::parameter("--list", "list all commands; with --json, including their options")},
        {"command"_s, "summary"_s}, help);
}

} // namespace commands
