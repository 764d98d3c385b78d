#include "output/Output.h"

#include "output/Table.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cerrno>
#include <cstdio>
#include <cstring>
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

QByteArray terseLine(const QJsonObject &row, const QStringList &fields)
{
    QStringList values;
    for (const QString &field : fields)
        values.append(terseText(row.value(field)));
    return values.join(QLatin1Char(':')).toUtf8() + '\n';
}

QByteArray jsonText(const QJsonDocument &document, Form form)
{
    return form == Form::JsonPretty ? document.toJson()
                                    : document.toJson(QJsonDocument::Compact) + '\n';
}

[[noreturn]] void throwWriteFailure()
{
    throw Failure{ExitStatus::Failed, format("Cannot write the output: %1",
                                             QString::fromLocal8Bit(std::strerror(errno)))};
}

} // namespace

Output::Output(Manner manner) : m_manner(std::move(manner)), m_terminal(Terminal::of(STDOUT_FILENO))
{
}

void Output::list(const Listing &listing)
{
    if (isForPeople()) {
        write(tableText(listing, m_manner.fields, m_terminal, m_manner.hasLegend).toUtf8());
        return;
    }
    QJsonArray array;
    for (const QJsonObject &row : listing.rows) {
        if (m_manner.form == Form::Terse)
            write(terseLine(row, m_manner.fields));
        else
            array.append(jsonOf(row));
    }
    if (m_manner.form != Form::Terse)
        write(jsonText(QJsonDocument(array), m_manner.form));
}

void Output::writeRow(const QJsonObject &row, Form form)
{
    if (form == Form::Human)
        write(recordText(row, m_manner.fields, m_terminal).toUtf8());
    else if (form == Form::Terse)
        write(terseLine(row, m_manner.fields));
    else
        write(jsonText(QJsonDocument(jsonOf(row)), form));
}

void Output::record(const QJsonObject &row)
{
    writeRow(row, m_manner.form);
}

void Output::done(const QString &sentence, const QJsonObject &row)
{
    if (isForPeople())
        say(text::printable(sentence));
    else
        record(row);
}

void Output::stream(const QString &line, const QJsonObject &row)
{
    if (isForPeople())
        say(line);
    else
        writeRow(row, m_manner.form == Form::Terse ? Form::Terse : Form::JsonShort);
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

QJsonObject Output::jsonOf(const QJsonObject &row) const
{
    QJsonObject object = m_manner.hasOtherFields ? row : QJsonObject();
    for (const QString &field : m_manner.fields)
        object.insert(field, row.contains(field) ? row.value(field) : QJsonValue());
    return object;
}

void Output::write(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size)
        throwWriteFailure();
}

// A failure to write to stderr cannot be reported.
void note(const QString &line)
{
    std::fputs((line + QLatin1Char('\n')).toUtf8().constData(), stderr);
}

void warn(const QString &text)
{
    const QString label = Terminal::of(STDERR_FILENO).yellow("warning:"_s);
    note(format("progkeysctl: %1 %2", label, text::printable(text)));
}

void sayFailure(const Failure &failure)
{
    const QString label = Terminal::of(STDERR_FILENO).red("error:"_s);
    note(format("progkeysctl: %1 %2.", label, text::printable(failure.message)));
    if (!failure.advice.isEmpty())
        note(text::printable(failure.advice));
}

} // namespace output
