#pragma once

#include "defaults/Kind.h"
#include "provisioning/ProvisioningText.h"

#include <QByteArray>

namespace defaults {

/// A place in a text, in QChars from 0, and its record and field.
struct Place
{
    int record = 1; ///< from 1; refused and empty records count
    int field = 0;  ///< from 1; 0 for the whole record
    int start = 0;
    int length = 0;

    int end() const { return start + length; }
};

enum class Severity { Warning, Error };

/// A problem in a setting.
struct Problem
{
    Severity severity = Severity::Error;
    QString code; ///< identifies the kind of problem; stays the same when the message changes
    Place place;
    QString message;
};

/// The text of a setting, and the problems found in it.
struct Setting
{
    QString file;
    Kind kind = Kind::Actions;
    QString text;
    QList<provisioning::Record> records; ///< none if the text is empty or the limit
    QList<Problem> problems;

    void addError(const char *code, const Place &place, const QString &message);
    void addWarning(const char *code, const Place &place, const QString &message);

    /// The place of one character.
    Place placeOf(int character) const;
};

/// The setting with this text.
Setting settingOf(const QString &file, Kind kind, const QString &text);

/// The setting in a file, without one newline at the end. It has a problem if no phone can receive
/// it: it is not UTF-8, begins with a byte order mark, contains U+0000, or is CSV or JSON.
Setting readSetting(const QString &file, Kind kind, QByteArray bytes);

/// Throws a Failure of status InvalidText if the setting has a problem.
void requireReadable(const Setting &setting);

/// The texts of a record's fields.
QStringList textsOf(const provisioning::Record &record);

} // namespace defaults
