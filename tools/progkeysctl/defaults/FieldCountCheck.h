#pragma once

#include "defaults/CommaGuess.h"

namespace defaults {

/// What is wrong with a record that is refused because it has too many or too few fields, with the
/// slip that probably made it so. `index` is its place among the setting's records.
Finding wrongFieldCount(const Setting &setting, int index, const Habits &habits);

} // namespace defaults
