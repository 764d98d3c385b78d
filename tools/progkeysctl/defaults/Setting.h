#pragma once

#include "defaults/Kind.h"
#include "provisioning/ProvisioningText.h"

#include <QByteArray>

namespace defaults {

/// Part of a text, in QChars from 0.
struct Span
{
    int start = 0;
    int length = 0;

    int end() const { return start + length; }
};

/// The part of the text that a record or field occupies.
template <typename Part>
Span spanOf(const Part &part)
{
    return {part.start, part.length};
}

enum class Severity { Warning, Error };

/// A problem in a setting, and where it is.
struct Problem
{
    Severity severity = Severity::Error;
    QString code; ///< identifies the kind of problem; stays the same when the message changes
    QString message;
    int record = 1; ///< from 1; refused and empty records count
    int field = 0;  ///< from 1; 0 for the whole record
    Span place;
};

/// The text of a setting, and the problems found in it.
struct Setting
{
    QString file;
    Kind kind = Kind::Actions;
    QString text;
    QList<provisioning::Record> records; ///< none if the text is empty or the limit
    QList<Problem> problems;
    bool isReadable = true; ///< false if all other problems may follow from the one that it has
};

/// The setting in a file, without one newline at the end. It is not readable, and has one problem,
/// if it is not UTF-8, begins with a byte order mark, contains U+0000, or is CSV or JSON.
Setting readSetting(const QString &file, Kind kind, QByteArray bytes);

/// Throws a Failure of status InvalidText if the setting is not readable.
void requireReadable(const Setting &setting);

/// The texts of a record's fields.
QStringList textsOf(const provisioning::Record &record);

/// The record and the field at a place in the text, in a problem.
Problem problemAt(const Setting &setting, const Span &place);

} // namespace defaults
