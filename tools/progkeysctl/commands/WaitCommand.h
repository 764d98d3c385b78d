#pragma once

#include "cli/Command.h"

namespace commands {

/// `wait`: waits until the service, or another module, is running.
cli::Command waitCommand();

} // namespace commands
