#pragma once

#include "cli/Command.h"

namespace commands {

/// `icon`, `label` and `press`: what an add-on module shows, and a finger on it.
QList<cli::Command> moduleCommands();

} // namespace commands
