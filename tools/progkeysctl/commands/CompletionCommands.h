#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `__complete` and `__commands`, which help does not show: what completion and the tests of the
/// manual ask the tool about itself.
void addCompletionCommands(cli::CommandLine &line);

} // namespace commands
