#pragma once

#include "defaults/Setting.h"

namespace defaults {

/// The problem with a record that has too many or too few fields. If a comma in one field explains
/// the number of fields, and no other field could have it, the problem names that field.
Finding wrongFieldCount(const Setting &setting, const provisioning::Record &record);

/// The record in lines, one for each field, with the names of the fields.
QStringList fieldByField(Kind kind, const provisioning::Record &record);

} // namespace defaults
