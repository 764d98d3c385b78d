#pragma once

#include "cli/Command.h"

namespace commands {

/// `__complete` and `__commands`, which help does not show: what completion and the tests of the
/// manual ask the tool about itself.
QList<cli::Command> completionCommands();

} // namespace commands
