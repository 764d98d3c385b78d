#pragma once

#include "outcome/Failure.h"

#include <QList>
#include <QString>

#include <optional>

/// The texts that provision a phone, looked at without one.
namespace defaults {

/// Which of the two settings a text is.
enum class Kind { Actions, Keys };

/// One of the fields of a record.
struct FieldName
{
    QString name;  ///< as on the bus; in CSV, JSON and findings
    QString title; ///< as people call it
    bool isNumber = false;
};

/// The fields of a record of that kind, in the order of the text.
const QList<FieldName> &fieldNames(Kind kind);

/// "actions" or "keys".
QString nameOf(Kind kind);

/// The kind of that name; nothing for another one.
std::optional<Kind> kindNamed(const QString &name);

/// The kind that the name of a file tells: it contains "Actions" or "Keys", in any case. Nothing if
/// it contains neither or both. The directories of its path do not matter.
std::optional<Kind> kindOfFile(const QString &path);

/// Thrown where nothing tells the kind of a file; `advice` says how to tell it.
Failure unknownKind(const QString &file, const QString &advice);

/// "field 6, label": for messages; `number` counts from 1, and beyond the last there is no name.
QString describeField(Kind kind, int number);

} // namespace defaults
