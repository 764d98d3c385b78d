#pragma once

#include "cli/Command.h"

namespace commands {

/// `status`: the state of the service, its bus, its keys and actions, and other modules.
cli::Command statusCommand();

} // namespace commands
