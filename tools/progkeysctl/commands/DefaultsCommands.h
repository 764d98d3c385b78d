#pragma once

#include "cli/CommandLine.h"

namespace commands {

/// `defaults ...`: what there is to do with the texts that provision a phone.
void addDefaultsCommands(cli::CommandLine &line);

} // namespace commands
