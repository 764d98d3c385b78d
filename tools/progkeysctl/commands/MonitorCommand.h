#pragma once

#include "cli/Command.h"

namespace commands {

/// `monitor`: every event as it comes.
cli::Command monitorCommand();

} // namespace commands
