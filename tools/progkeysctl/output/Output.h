#pragma once

#include "outcome/Failure.h"
#include "output/Listing.h"
#include "output/Terminal.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace output {

enum class Form { Human, Terse, JsonShort, JsonPretty };

/// How results are to be told.
struct Manner
{
    Form form = Form::Human;
    QStringList fields; ///< which fields, in which order; empty: those the command shows
    bool hasLegend = true;
};

/// The results of a command, on stdout. Diagnostics are not its business: they go to stderr.
class Output
{
public:
    explicit Output(Manner manner);

    /// Throws a Failure of status Usage if --fields names one that is none of the columns. What
    /// changes something asks first: a mistake in the line is told before anything is done.
    void requireFields(const QList<Column> &columns) const;

    /// Throws a Failure of status Usage if --terse or --fields is given. For commands that print a
    /// document instead of rows.
    void requireDocumentForm() const;

    /// Rows: a table that fits the terminal, a line a row, or an array of objects.
    void list(const Listing &listing);

    /// One row: its fields one below the other, one line, or an object.
    void record(const QList<Column> &columns, const QJsonObject &row);

    /// What was done: the sentence for people; else as `record`.
    void done(const QString &sentence, const QList<Column> &columns, const QJsonObject &row);

    /// One row of many that come one by one: the line for people, a line, or a short object; out
    /// at once. `Form::JsonPretty` does not make it longer than a line.
    void stream(const QString &line, const QList<Column> &columns, const QJsonObject &row);

    /// For people only.
    void say(const QString &line);

    /// As it is, for every form: what is no listing, such as a converted file.
    void raw(const QByteArray &bytes);

    bool isForPeople() const { return m_manner.form == Form::Human; }
    bool isJson() const;
    const Manner &manner() const { return m_manner; }
    const Terminal &terminal() const { return m_terminal; }

    /// Hands everything to the system; throws a Failure if it could not be written.
    void flush();

private:
    QList<Column> chosen(const QList<Column> &columns) const;
    QJsonObject selected(const QJsonObject &row, const QList<Column> &columns) const;
    void write(const QByteArray &bytes);

    Manner m_manner;
    Terminal m_terminal;
};

/// A line on stderr, `progkeysctl: warning: text`.
void warn(const QString &text);

/// The failure on stderr, `progkeysctl: error: message.`, and its advice on a second line.
void sayFailure(const Failure &failure);

} // namespace output
