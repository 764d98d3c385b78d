#include "cli/Help.h"

#include "output/Terminal.h"
#include "text/Format.h"

#include <algorithm>
#include <unistd.h>

namespace cli {
namespace {

constexpr int Indent = 2;
constexpr int Gap = 2;
constexpr int NarrowestText = 20;
constexpr int UsualWidth = 80;

/// A term and its explanation, in two columns.
using Entry = FieldHelp;

QString blanks(int count)
{
    return QString(count, QLatin1Char(' '));
}

// Further lines are indented.
QString wrapped(const QString &text, int width, int indent)
{
    QStringList lines = {QString()};
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        QString &line = lines.last();
        if (line.isEmpty())
            line = word;
        else if (line.size() + 1 + word.size() <= std::max(NarrowestText, width - indent))
            line += QLatin1Char(' ') + word;
        else
            lines.append(word);
    }
    return lines.join(QLatin1Char('\n') + blanks(indent)) + QLatin1Char('\n');
}

QString table(const QString &title, const QList<Entry> &entries, int width)
{
    if (entries.isEmpty())
        return {};
    int columns = 0;
    for (const Entry &entry : entries)
        columns = std::max(columns, static_cast<int>(entry.term.size()));
    QString text = format("\n%1:\n", title);
    for (const Entry &entry : entries)
        text += blanks(Indent) + entry.term.leftJustified(columns + Gap) +
                wrapped(entry.help, width, Indent + columns + Gap);
    return text;
}

QList<Entry> entriesOf(const QList<Parameter> &parameters, bool arePositional)
{
    QList<Entry> entries;
    for (const Parameter &parameter : parameters)
        if (parameter.isPositional() == arePositional)
            entries.append({parameter.term, parameter.help});
    return entries;
}

QList<Entry> entriesOf(const QList<Command> &commands)
{
    QList<Entry> entries;
    for (const Command &command : commands)
        entries.append({command.words.last(), command.summary});
    return entries;
}

QString synopsis(const Command &command)
{
    QStringList words = QStringList("Usage: progkeysctl"_s) + command.words;
    words += command.isGroup() ? "COMMAND [OPTION]... [ARGUMENT]..."_s : "[OPTION]..."_s;
    for (const Parameter &parameter : command.parameters)
        if (parameter.isPositional())
            words += parameter.term;
    return words.join(QLatin1Char(' '));
}

QString capitalized(QString sentence)
{
    return sentence.replace(0, 1, sentence.at(0).toUpper()) + QLatin1Char('.');
}

} // namespace

QString helpText(const QList<Command> &commands, const Command &command)
{
    const int ofTerminal = output::Terminal::of(STDOUT_FILENO).width();
    const int width = ofTerminal > 0 ? ofTerminal : UsualWidth;
    QString text = wrapped(synopsis(command), width, Indent);
    text += QLatin1Char('\n') + wrapped(capitalized(command.summary), width, 0);
    text += table("Commands"_s, entriesOf(membersOf(commands, command.words)), width);
    text += table("Arguments"_s, entriesOf(command.parameters, true), width);
    text += table("Fields"_s, command.fields, width);
    text += table("Options"_s, entriesOf(command.parameters, false), width);
    if (!command.notes.isEmpty())
        text += QLatin1Char('\n') + wrapped(command.notes, width, 0);
    text += table("Options of all commands"_s, entriesOf(commonOptions(), false), width);
    text.chop(1);
    return text;
}

} // namespace cli
