#pragma once

#include "cli/Command.h"

namespace commands {

/// `defaults plan`: what the next start of the service would do to its rows.
cli::Command defaultsPlanCommand();

} // namespace commands
