#pragma once

#include "defaults/Kind.h"

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace defaults {

/// The records of a setting as texts, each of 7 fields: what every form of them comes down to.
struct Table
{
    Kind kind = Kind::Actions;
    QList<QStringList> records;
};

/// Each of the readers takes the bytes of the file of that name (for messages) and the kind that
/// was asked for, if one was. It throws a Failure of status InvalidText where the bytes are not
/// what they should be, or are of the other kind.

/// The text of a setting; the kind must be known. Refused records, and bytes that cannot be
/// delivered, are not converted.
Table readText(const QByteArray &bytes, const QString &file, Kind kind);

/// The text of a setting, with one newline at its end. Throws a Failure of status InvalidText that
/// names the record and the field if the records cannot be said in such a text.
QByteArray writeText(const Table &table);

/// Comma-separated values as RFC 4180 has them, in UTF-8, with or without a byte order mark. The
/// header line names the fields, in any order, and tells the kind.
Table readCsv(const QByteArray &bytes, const QString &file, std::optional<Kind> kind);
QByteArray writeCsv(const Table &table);

/// `{"schema": ..., "version": 1, "kind": "actions", "records": [{...}]}`; a number field is a
/// number if its text is just how that number is written, else it is the text.
Table readJson(const QByteArray &bytes, const QString &file, std::optional<Kind> kind);
QByteArray writeJson(const Table &table);

} // namespace defaults
