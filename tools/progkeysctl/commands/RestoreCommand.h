#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `restore`: back to the defaults.
void addRestoreCommand(cli::CommandLine &line);

} // namespace commands
