#include "output/Output.h"

#include "output/Table.h"
#include "text/Format.h"
#include "text/Suggestion.h"
#include "text/Text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <unistd.h>

namespace output {
namespace {

// A value in a line for scripts, with the separators of values and lines escaped.
QString terseText(const QJsonValue &value)
{
    QString text = displayText(value);
    return text.replace(QLatin1Char('\\'), "\\\\"_s)
        .replace(QLatin1Char(':'), "\\:"_s)
        .replace(QLatin1Char('\n'), "\\n"_s);
}

QByteArray terseLine(const QList<Column> &columns, const QJsonObject &row)
{
    QStringList values;
    for (const Column &column : columns)
        values.append(terseText(row.value(column.name)));
    return values.join(QLatin1Char(':')).toUtf8() + '\n';
}

QString adviceOn(const QString &name, const QList<Column> &columns)
{
    QStringList names;
    for (const Column &column : columns)
        names.append(column.name);
    return text::withSuggestion(name, names, format("The fields are %1.", names.join(", "_s)));
}

template <typename Document>
QByteArray jsonText(const Document &content, bool isPretty)
{
    const QByteArray text =
        QJsonDocument(content).toJson(isPretty ? QJsonDocument::Indented : QJsonDocument::Compact);
    return isPretty ? text : text + '\n';
}

// A failure to write to stderr cannot be reported.
void sayOnStderr(const QString &text)
{
    std::fputs((text + QLatin1Char('\n')).toUtf8().constData(), stderr);
}

[[noreturn]] void throwWriteFailure()
{
    throw Failure{
        ExitStatus::Failed,
        format("Cannot write the output: %1", QString::fromLocal8Bit(std::strerror(errno))),
        {}};
}

} // namespace

Output::Output(Manner manner) : m_manner(std::move(manner)), m_terminal(Terminal::of(STDOUT_FILENO))
{
}

bool Output::isJson() const
{
    return m_manner.form == Form::JsonPretty || m_manner.form == Form::JsonShort;
}

void Output::requireDocumentForm() const
{
    if (m_manner.form == Form::Terse || !m_manner.fields.isEmpty())
        throw Failure{ExitStatus::Usage,
                      "This command prints a document: --terse and --fields do not apply"_s,
                      {}};
}

void Output::list(const Listing &listing)
{
    Listing shown = listing;
    shown.columns = chosen(listing.columns);
    if (isForPeople()) {
        write(tableText(shown, m_terminal, m_manner.hasLegend).toUtf8());
        return;
    }
    QJsonArray rows;
    for (const QJsonObject &row : listing.rows) {
        if (isJson())
            rows.append(selected(row, shown.columns));
        else
            write(terseLine(shown.columns, row));
    }
    if (isJson())
        write(jsonText(rows, m_manner.form == Form::JsonPretty));
}

void Output::writeRow(const QList<Column> &columns, const QJsonObject &row, bool isPretty)
{
    const QList<Column> shown = chosen(columns);
    if (isForPeople())
        write(recordText(shown, row, m_terminal).toUtf8());
    else if (isJson())
        write(jsonText(selected(row, shown), isPretty));
    else
        write(terseLine(shown, row));
}

void Output::record(const QList<Column> &columns, const QJsonObject &row)
{
    writeRow(columns, row, m_manner.form == Form::JsonPretty);
}

void Output::done(const QString &sentence, const QList<Column> &columns, const QJsonObject &row)
{
    if (isForPeople())
        say(text::printable(sentence));
    else
        record(columns, row);
}

void Output::stream(const QString &line, const QList<Column> &columns, const QJsonObject &row)
{
    if (isForPeople())
        say(line);
    else
        writeRow(columns, row, false);
    flush();
}

void Output::say(const QString &line)
{
    if (isForPeople())
        write(line.toUtf8() + '\n');
}

void Output::flush()
{
    if (std::fflush(stdout) != 0)
        throwWriteFailure();
}

QList<Column> Output::chosen(const QList<Column> &columns) const
{
    QList<Column> result;
    if (m_manner.fields.isEmpty()) {
        std::copy_if(columns.begin(), columns.end(), std::back_inserter(result),
                     [this](const Column &each) { return each.isShown || !isForPeople(); });
        return result;
    }
    for (const QString &name : m_manner.fields) {
        const auto column = std::find_if(columns.begin(), columns.end(),
                                         [&](const Column &each) { return each.name == name; });
        if (column == columns.end())
            throw Failure{ExitStatus::Usage, format("--fields: unknown field %1", name),
                          adviceOn(name, columns)};
        result.append(*column);
    }
    return result;
}

QJsonObject Output::selected(const QJsonObject &row, const QList<Column> &columns) const
{
    if (m_manner.fields.isEmpty())
        return row;
    QJsonObject result;
    for (const Column &column : columns)
        result.insert(column.name, row.value(column.name));
    return result;
}

void Output::write(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size)
        throwWriteFailure();
}

void warn(const QString &text)
{
    const QString label = Terminal::of(STDERR_FILENO).yellow("warning:"_s);
    sayOnStderr(format("progkeysctl: %1 %2", label, text::printable(text)));
}

void sayFailure(const Failure &failure)
{
    const QString label = Terminal::of(STDERR_FILENO).red("error:"_s);
    sayOnStderr(format("progkeysctl: %1 %2.", label, text::printable(failure.message)));
    if (!failure.advice.isEmpty())
        sayOnStderr(text::printable(failure.advice));
}

} // namespace output
