#pragma once

#include "defaults/Rollout.h"
#include "planning/Plan.h"

#include <functional>

namespace defaults {

/// A setting of the phone; nothing if it cannot be read.
using PhoneSetting = std::function<std::optional<QString>(const QString &name)>;

/// The settings that a plan is for: those of the rollout, and the phone's for the others. If the
/// rollout is a directory, or the phone has no such setting, a missing one is empty, as it is for
/// the service, and a warning is printed.
///
/// Throws a Failure of status InvalidText if a setting of the rollout cannot be delivered.
PlannedSettings settingsOf(const Rollout &rollout, std::optional<int> limit,
                           const PhoneSetting &phone);

} // namespace defaults
