#pragma once

#include "cli/Command.h"

namespace commands {

/// `defaults check`, `defaults convert` and `defaults plan`: the settings that provision a phone.
QList<cli::Command> defaultsCommands();

} // namespace commands
