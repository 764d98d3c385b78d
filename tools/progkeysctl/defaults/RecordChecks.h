#pragma once

#include "defaults/Setting.h"

namespace defaults {

/// Adds to the setting's findings what is wrong with its records, each by itself: fields too many
/// or too few, empty records, numbers that are none, empty identifiers, words and line breaks that
/// do not come out as they are written.
void checkRecords(Setting &setting);

} // namespace defaults
