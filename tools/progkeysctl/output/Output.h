#pragma once

#include "outcome/Failure.h"
#include "output/Listing.h"
#include "output/Terminal.h"

#include <QByteArray>
#include <QStringList>

namespace output {

enum class Form { Human, Terse, JsonShort, JsonPretty };

/// How to print results.
struct Manner
{
    Form form = Form::Human;
    QStringList fields;         ///< those to print, in this order
    bool hasOtherFields = true; ///< whether JSON has all members of a row
    bool hasLegend = true;
};

/// The results of a command, on stdout. Diagnostics go to stderr.
class Output
{
public:
    explicit Output(Manner manner);

    /// Rows: a table that fits the terminal, lines, or an array of objects.
    void list(const Listing &listing);

    /// One row: its fields in a line each, one line, or an object.
    void record(const QJsonObject &row);

    /// What was done: a sentence for people, else as `record`.
    void done(const QString &sentence, const QJsonObject &row);

    /// One of many rows, printed at once: a line for people, one line, or an object in one line.
    void stream(const QString &line, const QJsonObject &row);

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
    QJsonObject jsonOf(const QJsonObject &row) const;
    void writeRow(const QJsonObject &row, Form form);

    Manner m_manner;
    Terminal m_terminal;
};

/// Prints a line on stderr, where it does not mix with results.
void note(const QString &line);

/// Prints `progkeysctl: warning: text` on stderr.
void warn(const QString &text);

/// Prints `progkeysctl: error: message.` on stderr, and the advice in a second line.
void sayFailure(const Failure &failure);

} // namespace output
