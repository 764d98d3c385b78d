#pragma once

#include "cli/Command.h"

namespace commands {

/// `export` and `import`: what users made, to a file and back.
QList<cli::Command> exchangeCommands();

} // namespace commands
