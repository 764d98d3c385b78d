#pragma once

#include "cli/Command.h"

namespace commands {

/// `wait`: until the service is up.
cli::Command waitCommand();

} // namespace commands
