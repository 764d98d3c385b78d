#pragma once

#include "cli/Command.h"

namespace commands {

/// `sandbox`: a phone of one's own, for as long as a command runs.
cli::Command sandboxCommand();

} // namespace commands
