#pragma once

#include "cli/Command.h"

namespace commands {

/// `status`: the service, its bus, what it holds, and who else is there.
cli::Command statusCommand();

} // namespace commands
