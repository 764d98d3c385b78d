#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `icon`, `label` and `press`: what an add-on module shows, and a finger on it.
void addModuleCommands(cli::CommandLine &line);

} // namespace commands
