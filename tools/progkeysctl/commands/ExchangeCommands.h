#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `export` and `import`: what users made, to a file and back.
void addExchangeCommands(cli::CommandLine &line);

} // namespace commands
