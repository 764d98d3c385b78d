#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `status`: the service, its bus, what it holds, and who else is there.
void addStatusCommand(cli::CommandLine &line);

} // namespace commands
