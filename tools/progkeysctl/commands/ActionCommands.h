#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `action list`, `show`, `add`, `set` and `delete`.
void addActionCommands(cli::CommandLine &line);

} // namespace commands
