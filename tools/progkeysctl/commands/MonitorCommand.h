#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `monitor`: every event as it comes.
void addMonitorCommand(cli::CommandLine &line);

} // namespace commands
