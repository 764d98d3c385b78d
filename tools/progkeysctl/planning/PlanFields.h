#pragma once

#include "fields/Fields.h"
#include "planning/Plan.h"

namespace defaults {

/// The fields in which two rows differ, in the order of the bus.
template <typename Record>
QList<FieldChange> changesBetween(const Record &before, const Record &after)
{
    const QJsonObject from = fields::toJson(before);
    const QJsonObject to = fields::toJson(after);
    QList<FieldChange> changes;
    for (const fields::Field<Record> &field : fields::of<Record>()) {
        if (from.value(field.name) != to.value(field.name))
            changes.append({field.name, from.value(field.name), to.value(field.name)});
    }
    return changes;
}

} // namespace defaults
