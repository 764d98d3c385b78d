#pragma once

#include "cli/Command.h"

namespace commands {

/// `defaults ...`: what there is to do with the texts that provision a phone.
QList<cli::Command> defaultsCommands();

} // namespace commands
