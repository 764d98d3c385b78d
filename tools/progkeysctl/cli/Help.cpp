#include "cli/Help.h"

#include "cli/CommonOptions.h"

#include <algorithm>

namespace cli {
namespace {

constexpr int Indent = 2;
constexpr int Gap = 2;
constexpr int WidestTerm = 30;
constexpr int NarrowestText = 20;

/// A term and its explanation, in two columns.
using Entry = FieldHelp;

QStringList wrapped(const QString &text, int width)
{
    QStringList lines;
    QString line;
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > width) {
            lines.append(line);
            line.clear();
        }
        line += line.isEmpty() ? word : QLatin1Char(' ') + word;
    }
    lines.append(line);
    return lines;
}

QString blanks(int count)
{
    return QString(count, QLatin1Char(' '));
}

int termColumns(const QList<Entry> &entries)
{
    int columns = 0;
    for (const Entry &entry : entries)
        if (entry.term.size() <= WidestTerm)
            columns = std::max(columns, static_cast<int>(entry.term.size()));
    return columns;
}

// A term that is too long stands on a line of its own.
QString table(const QString &title, const QList<Entry> &entries, int width)
{
    if (entries.isEmpty())
        return {};
    const int columns = termColumns(entries);
    const int start = Indent + columns + Gap;
    QString text = QStringLiteral("\n%1:\n").arg(title);
    for (const Entry &entry : entries) {
        const QStringList lines = wrapped(entry.help, std::max(NarrowestText, width - start));
        const bool fits = entry.term.size() <= columns;
        text += blanks(Indent) + entry.term;
        text += fits ? blanks(start - Indent - static_cast<int>(entry.term.size()))
                     : QLatin1Char('\n') + blanks(start);
        text += lines.join(QLatin1Char('\n') + blanks(start)) + QLatin1Char('\n');
    }
    return text;
}

QString paragraphs(const QString &text, int width)
{
    QString result;
    const QStringList all = text.split(QLatin1Char('\n'));
    for (const QString &paragraph : all)
        result += QLatin1Char('\n') + wrapped(paragraph, width).join(QLatin1Char('\n')) +
                  QLatin1Char('\n');
    return result;
}

QString repeated(const QString &text, const Parameter &parameter)
{
    return parameter.isRepeatable ? text + QStringLiteral("...") : text;
}

QString termOf(const Parameter &parameter)
{
    if (parameter.isPositional())
        return repeated(parameter.name, parameter);
    QString term = parameter.shortName.isEmpty()
                       ? parameter.name
                       : parameter.shortName + QStringLiteral(", ") + parameter.name;
    if (!parameter.isFlag())
        term += QLatin1Char(' ') + parameter.type.name;
    return repeated(term, parameter);
}

QList<Entry> entriesOf(const QList<Parameter> &parameters, bool arePositional)
{
    QList<Entry> entries;
    for (const Parameter &parameter : parameters)
        if (parameter.isPositional() == arePositional)
            entries.append({termOf(parameter), parameter.help});
    return entries;
}

QList<Entry> membersOf(const QList<Command> &commands, const QStringList &group)
{
    QList<Entry> entries;
    for (const Command &command : commands)
        if (command.isMemberOf(group))
            entries.append({command.words.last(), command.summary});
    return entries;
}

QString capitalized(QString sentence)
{
    return sentence.replace(0, 1, sentence.at(0).toUpper()) + QLatin1Char('.');
}

} // namespace

QString synopsis(const Command &command)
{
    QString text = QStringLiteral("progkeysctl %1 ").arg(command.name());
    if (command.isGroup())
        return text + QStringLiteral("COMMAND [OPTION]... [ARGUMENT]...");
    text += QStringLiteral("[OPTION]...");
    for (const Parameter &parameter : command.parameters) {
        if (!parameter.isPositional())
            continue;
        const QString term = termOf(parameter);
        text += parameter.isRequired ? QLatin1Char(' ') + term : QStringLiteral(" [%1]").arg(term);
    }
    return text;
}

QString helpText(const QList<Command> &commands, const Command *command, int width)
{
    const QString usage = command ? synopsis(*command)
                                  : QStringLiteral("progkeysctl COMMAND [OPTION]... [ARGUMENT]...");
    const QString summary = command ? capitalized(command->summary)
                                    : QStringLiteral("Manage the programmable keys of the phone.");
    QString text =
        wrapped(QStringLiteral("Usage: ") + usage, width).join(QLatin1Char('\n') + blanks(Indent));
    text += QLatin1Char('\n');
    text += paragraphs(summary, width);
    text += table(QStringLiteral("Commands"),
                  membersOf(commands, command ? command->words : QStringList()), width);
    if (command) {
        text += table(QStringLiteral("Arguments"), entriesOf(command->parameters, true), width);
        text += table(QStringLiteral("Fields"), command->fields, width);
        text += table(QStringLiteral("Options"), entriesOf(command->parameters, false), width);
    }
    text +=
        table(QStringLiteral("Options of all commands"), entriesOf(commonOptions(), false), width);
    if (command && !command->notes.isEmpty())
        text += paragraphs(command->notes, width);
    text.chop(1);
    return text;
}

} // namespace cli
