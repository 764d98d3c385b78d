#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `sandbox`: a phone of one's own, for as long as a command runs.
void addSandboxCommand(cli::CommandLine &line);

} // namespace commands
