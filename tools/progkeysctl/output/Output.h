#pragma once

#include "outcome/Failure.h"
#include "output/Listing.h"
#include "output/Terminal.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace output {

enum class Form { Human, Terse, JsonShort, JsonPretty };

/// How to print results.
struct Manner
{
    Form form = Form::Human;
    QStringList fields; ///< in this order; empty for those that the command shows
    bool hasLegend = true;
};

/// The results of a command, on stdout. Diagnostics go to stderr.
class Output
{
public:
    explicit Output(Manner manner);

    /// Throws a Failure of status Usage if --fields has a name that is not a column. Commands that
    /// change something call it before they do.
    void requireFields(const QList<Column> &columns) const { chosen(columns); }

    /// Throws a Failure of status Usage if --terse or --fields is given. For commands that print a
    /// document instead of rows.
    void requireDocumentForm() const;

    /// Rows: a table that fits the terminal, lines, or an array of objects.
    void list(const Listing &listing);

    /// One row: its fields in a line each, one line, or an object.
    void record(const QList<Column> &columns, const QJsonObject &row);

    /// What was done: a sentence for people, else as `record`.
    void done(const QString &sentence, const QList<Column> &columns, const QJsonObject &row);

    /// One of many rows, printed at once: a line for people, one line, or an object in one line.
    void stream(const QString &line, const QList<Column> &columns, const QJsonObject &row);

    /// A line for people only.
    void say(const QString &line);

    /// Prints the bytes unchanged, in every form.
    void write(const QByteArray &bytes);

    bool isForPeople() const { return m_manner.form == Form::Human; }
    const Manner &manner() const { return m_manner; }
    const Terminal &terminal() const { return m_terminal; }

    /// Throws a Failure if the output could not be written.
    void flush();

private:
    QList<Column> chosen(const QList<Column> &columns) const;
    QJsonObject selected(const QJsonObject &row, const QList<Column> &columns) const;
    void writeRow(const QList<Column> &columns, const QJsonObject &row, bool isPretty);
    bool isJson() const;

    Manner m_manner;
    Terminal m_terminal;
};

/// Prints `progkeysctl: warning: text` on stderr.
void warn(const QString &text);

/// Prints `progkeysctl: error: message.` on stderr, and the advice in a second line.
void sayFailure(const Failure &failure);

} // namespace output
