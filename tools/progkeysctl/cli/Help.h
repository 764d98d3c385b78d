#pragma once

#include "cli/Command.h"

namespace cli {

/// Help on one of the commands or groups, wrapped to fit the terminal. Without a line break at its
/// end.
QString helpText(const QList<Command> &commands, const Command &command);

} // namespace cli
