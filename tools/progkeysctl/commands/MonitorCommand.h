#pragma once

#include "cli/Command.h"

namespace commands {

/// `monitor`: shows events as they arrive.
cli::Command monitorCommand();

} // namespace commands
