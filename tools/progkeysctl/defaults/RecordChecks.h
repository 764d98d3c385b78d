#pragma once

#include "defaults/Setting.h"

namespace defaults {

/// Finds what is wrong with single records: the number of fields, empty records, numbers, empty
/// identifiers, placeholder words and line breaks.
void checkRecords(Setting &setting);

/// The identifier of a record, without line breaks at its start: these are reported once, and must
/// not make every comparison fail.
QString identifierOf(const provisioning::Record &record);

} // namespace defaults
