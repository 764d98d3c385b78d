#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `defaults plan`: what the next start of the service would do to its rows.
void addDefaultsPlan(cli::CommandLine &line, CLI::App *group);

} // namespace commands
