#pragma once

#include "defaults/Rollout.h"

namespace defaults {

/// Checks all settings that are readable, and adds the problems to them, sorted by place. Keys are
/// compared with the actions, and with the limit: the given one, else that of the rollout.
void check(Rollout &rollout, std::optional<int> limit);

} // namespace defaults
