#include "cli/LineChecks.h"

#include "cli/CommonOptions.h"
#include "outcome/Failure.h"
#include "outcome/Suggestion.h"

namespace cli {
namespace {

// The word and the known words are for a suggestion.
[[noreturn]] void refuse(const ParsedLine &line, const QString &message, const QString &word = {},
                         const QStringList &known = {})
{
    const QString name = line.command ? QLatin1Char(' ') + line.command->name() : QString();
    const QString help = QStringLiteral("See \"progkeysctl%1 --help\".").arg(name);
    throw Failure{ExitStatus::Usage, message, outcome::withSuggestion(word, known, help)};
}

QStringList optionNames(const Command *command)
{
    QStringList names;
    const QList<Parameter> all = command ? command->parameters + commonOptions() : commonOptions();
    for (const Parameter &parameter : all)
        if (!parameter.isPositional())
            names.append(parameter.name);
    return names;
}

QStringList memberNames(const QList<Command> &commands, const QStringList &group)
{
    QStringList names;
    for (const Command &command : commands)
        if (command.isMemberOf(group))
            names.append(command.words.last());
    return names;
}

void requireKnownOptions(const ParsedLine &line)
{
    for (const QString &word : line.unexpected) {
        const QString name = word.section(QLatin1Char('='), 0, 0);
        if (name.startsWith(QLatin1Char('-')))
            refuse(line, QStringLiteral("Unknown option %1").arg(name), name,
                   optionNames(line.command));
    }
}

void requireCommand(const ParsedLine &line, const QList<Command> &commands)
{
    if (line.command && !line.command->isGroup())
        return;
    if (line.unexpected.isEmpty())
        refuse(line, QStringLiteral("A command is required"));
    const QStringList group = line.command ? line.command->words : QStringList();
    const QString word = line.unexpected.first();
    refuse(line,
           QStringLiteral("Unknown command \"%1\"")
               .arg((group + QStringList(word)).join(QLatin1Char(' '))),
           word, memberNames(commands, group));
}

void requireCompatibleOptions(const ParsedLine &line)
{
    const QList<QStringList> sets = exclusiveOptions();
    for (const QStringList &set : sets) {
        QStringList given;
        for (const QString &option : set)
            if (!line.arguments.values(option).isEmpty())
                given.append(option);
        if (given.size() > 1)
            refuse(line,
                   QStringLiteral("%1 cannot be combined with %2").arg(given.at(1), given.at(0)));
    }
}

void requireValidValues(const ParsedLine &line, const Parameter &parameter)
{
    const QList<QByteArray> values = line.arguments.values(parameter.name);
    if (values.isEmpty() && parameter.isRequired)
        refuse(line, QStringLiteral("%1 is required").arg(parameter.name));
    if (parameter.isFlag()) {
        // What the parser stores for a flag without a value.
        if (!values.isEmpty() && values.last() != "true")
            refuse(line, QStringLiteral("%1 takes no value").arg(parameter.name));
        return;
    }
    if (values.size() > 1 && !parameter.isRepeatable)
        refuse(line, QStringLiteral("%1 is given more than once").arg(parameter.name));
    for (const QByteArray &value : values) {
        const QString fault = parameter.type.faultOf(value);
        if (!fault.isEmpty())
            refuse(line, QStringLiteral("%1: \"%2\" %3")
                             .arg(parameter.name, QString::fromUtf8(value), fault));
    }
}

} // namespace

void requireValid(const ParsedLine &line, const QList<Command> &commands)
{
    requireKnownOptions(line);
    requireCommand(line, commands);
    if (!line.unexpected.isEmpty())
        refuse(line, QStringLiteral("Unexpected argument \"%1\"").arg(line.unexpected.first()));
    requireCompatibleOptions(line);
    const QList<Parameter> parameters = line.command->parameters + commonOptions();
    for (const Parameter &parameter : parameters)
        requireValidValues(line, parameter);
}

} // namespace cli
