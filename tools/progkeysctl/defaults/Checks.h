#pragma once

#include "defaults/Rollout.h"

namespace defaults {

/// Checks all settings that are readable, and adds the problems to them, sorted by place. Keys are
/// compared with the actions and with the limit.
void check(Rollout &rollout);

} // namespace defaults
