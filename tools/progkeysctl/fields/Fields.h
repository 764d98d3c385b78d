#pragma once

#include "output/Listing.h"
#include "records/Action.h"
#include "records/Key.h"

#include <QJsonObject>
#include <QString>

#include <variant>

/// Records by the names of their fields, as they stand in commands, tables and JSON.
namespace fields {

/// Did a user make it: neither provisioned nor the reserved one?
bool isUsers(const Action &action);

template <typename Record>
struct Field
{
    QString name;
    QString heading;
    std::variant<QString Record::*, int Record::*, qlonglong Record::*> member;
};

/// The fields of `Key` or `Action`, in the order of the bus.
template <typename Record>
const QList<Field<Record>> &of();

/// The same as the columns of a listing.
template <typename Record>
QList<output::Column> columns();

/// The record as an object: numbers as numbers, texts as texts.
template <typename Record>
QJsonObject toJson(const Record &record);

/// Sets the fields that the object has. Throws a Failure of status InvalidText if it has a field
/// that there is not, or one with a value of another type or out of range; `where` begins its text.
template <typename Record>
void setFromJson(Record &record, const QJsonObject &object, const QString &where);

/// Sets the fields of assignments `FIELD=VALUE`. Throws a Failure of status Usage if one of them is
/// none, names no field or gives a number field no decimal number of its range.
template <typename Record>
void assign(Record &record, const QStringList &assignments);

} // namespace fields
