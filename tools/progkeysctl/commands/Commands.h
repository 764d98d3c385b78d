#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// Adds every command, in the order in which help shows them.
void addAll(cli::CommandLine &line);

} // namespace commands
