#pragma once

#include "cli/Command.h"

namespace commands {

/// `sandbox`: runs a command with a private phone.
cli::Command sandboxCommand();

} // namespace commands
