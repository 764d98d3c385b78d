#pragma once

#include "cli/Command.h"

namespace commands {

/// `key list`, `show`, `add`, `set`, `move` and `delete`.
QList<cli::Command> keyCommands();

} // namespace commands
