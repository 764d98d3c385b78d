#pragma once

#include "cli/Command.h"

namespace cli {

/// Help on one command or group, or on the whole tool if `command` is null, wrapped to fit the
/// terminal. Without a line break at its end.
QString helpText(const QList<Command> &commands, const Command *command);

} // namespace cli
