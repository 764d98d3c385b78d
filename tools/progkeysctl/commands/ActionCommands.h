#pragma once

#include "cli/Command.h"

namespace commands {

/// `action list`, `show`, `add`, `set` and `delete`.
QList<cli::Command> actionCommands();

} // namespace commands
