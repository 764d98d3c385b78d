#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `wait`: until the service is up.
void addWaitCommand(cli::CommandLine &line);

} // namespace commands
