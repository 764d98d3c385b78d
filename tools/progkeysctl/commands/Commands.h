#pragma once

#include "cli/Command.h"

namespace commands {

/// Every command, in the order in which help shows them.
QList<cli::Command> all();

} // namespace commands
