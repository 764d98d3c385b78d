#pragma once

#include "fields/Fields.h"
#include "outcome/Failure.h"

#include <optional>

/// The settings that provision a phone, as files.
namespace defaults {

/// Which setting a text is: DefaultActions, DefaultKeys or ProgKeysMax.
enum class Kind { Actions, Keys, Limit };

/// The fields of a record, in the order of the text; none for the limit, which is one number.
const QList<fields::Field> &fieldsOf(Kind kind);
QStringList fieldNames(Kind kind);

/// "actions" or "keys".
QString nameOf(Kind kind);
std::optional<Kind> kindNamed(const QString &name);

/// "DefaultActions", "DefaultKeys" or "ProgKeysMax".
QString settingName(Kind kind);

/// The kind that a file name implies: `ProgKeysMax`, or a name that contains either "Actions" or
/// "Keys" in any case. Directories do not matter.
std::optional<Kind> kindOfFile(const QString &path);

/// Thrown if the kind of a file is unknown; `advice` names the option that specifies it.
Failure unknownKind(const QString &file, const QString &advice);

} // namespace defaults
