#pragma once

#include "outcome/Failure.h"

#include <QList>
#include <QString>

#include <optional>

/// The settings that provision a phone, as files.
namespace defaults {

/// Which setting a text is: DefaultActions, DefaultKeys or ProgKeysMax.
enum class Kind { Actions, Keys, Limit };

/// A field of a record.
struct FieldName
{
    QString name;  ///< on the bus, in CSV, JSON and reports
    QString title; ///< in messages
    bool isNumber = false;
};

/// The fields of a record, in the order of the text; none for the limit, which is one number.
const QList<FieldName> &fieldNames(Kind kind);

/// "actions", "keys" or "limit".
QString nameOf(Kind kind);

/// "DefaultActions", "DefaultKeys" or "ProgKeysMax".
QString settingName(Kind kind);

/// The kind for "actions" or "keys".
std::optional<Kind> kindNamed(const QString &name);

/// The kind that a file name implies: `ProgKeysMax`, or a name that contains either "Actions" or
/// "Keys" in any case. Directories do not matter.
std::optional<Kind> kindOfFile(const QString &path);

/// Thrown if the kind of a file is unknown; `advice` names the option that specifies it.
Failure unknownKind(const QString &file, const QString &advice);

/// "field 6, label"; `number` counts from 1.
QString describeField(Kind kind, int number);

} // namespace defaults
