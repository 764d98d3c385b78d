#pragma once

#include "cli/Command.h"

namespace commands {

/// `help`: the same as --help, and the list of all commands.
cli::Command helpCommand();

} // namespace commands
