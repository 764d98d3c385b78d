#pragma once

#include "cli/Command.h"

namespace commands {

/// `restore`: deletes all rows and restores the provisioned defaults.
cli::Command restoreCommand();

} // namespace commands
