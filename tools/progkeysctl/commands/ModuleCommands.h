#pragma once

#include "cli/Command.h"

namespace commands {

/// `icon`, `label` and `press`: the display and the keys of an add-on module.
QList<cli::Command> moduleCommands();

} // namespace commands
