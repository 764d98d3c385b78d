#pragma once

#include "defaults/Kind.h"

#include <QByteArray>
#include <QStringList>

namespace defaults {

/// The records of a setting, each with 7 fields as text.
struct Records
{
    Kind kind = Kind::Actions;
    QList<QStringList> records;
    QList<int> lines = {}; ///< of each record in the spreadsheet, if they come from one
};

/// The readers take the content of a file, and its name for messages. They throw a Failure of
/// status InvalidText if the content is invalid.

/// The text of a setting. Refused records, and text that cannot be delivered, are errors.
Records readText(const QByteArray &bytes, const QString &file, Kind kind);

/// The text of a setting, with a newline at its end. Throws a Failure of status InvalidText that
/// names the record and the field if the phone would read another text.
QByteArray writeText(const Records &records);

/// Comma-separated values (RFC 4180) in UTF-8; semicolons and tabs are read, too. The header names
/// the fields, in any order. Empty rows are skipped with a warning.
Records readCsv(const QByteArray &bytes, const QString &file);
QByteArray writeCsv(const Records &records);

/// `{"schema": ..., "version": 1, "kind": "actions", "records": [{...}]}`. A number field is a JSON
/// number, or a string if its text is not the number's usual form.
Records readJson(const QByteArray &bytes, const QString &file);
QByteArray writeJson(const Records &records);

} // namespace defaults
