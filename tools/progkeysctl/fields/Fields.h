#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

/// Records by the names of their fields, which are the same in commands, tables and JSON.
namespace fields {

/// Whether a user created the action: it is neither provisioned nor the reserved action.
bool isUsers(const Action &action);

struct Field
{
    QString name;
    bool isNumber = false;
    QString help;
};

QStringList namesOf(const QList<Field> &fields);

/// The fields of `Key` or `Action`, in the order of the bus.
template <typename Record>
const QList<Field> &of();

/// The record as an object: numbers as numbers, texts as texts.
template <typename Record>
QJsonObject toJson(const Record &record);

/// Sets the fields that the object has. Throws a Failure of status InvalidText for an unknown field
/// or an invalid value; `where` begins its message.
template <typename Record>
void setFromJson(Record &record, const QJsonObject &object, const QString &where);

/// Sets the fields of assignments `FIELD=VALUE`. Throws a Failure of status Usage for an invalid
/// assignment, an unknown field or an invalid number.
template <typename Record>
void assign(Record &record, const QStringList &assignments);

} // namespace fields
