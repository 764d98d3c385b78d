#pragma once

#include "cli/Command.h"

namespace commands {

/// `restore`: back to the defaults.
cli::Command restoreCommand();

} // namespace commands
