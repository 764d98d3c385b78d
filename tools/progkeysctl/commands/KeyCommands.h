#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `key list`, `show`, `add`, `set`, `move` and `delete`.
void addKeyCommands(cli::CommandLine &line);

} // namespace commands
