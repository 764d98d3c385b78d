#pragma once

#include "cli/Command.h"
#include "outcome/Failure.h"

namespace cli {

/// Parses the words after the name of the program and runs the command. Each group stands before
/// its members in `commands`; the first one is the whole tool. Throws a Failure if the line is
/// invalid or the command fails.
ExitStatus run(const QList<Command> &commands, const QList<QByteArray> &words);

} // namespace cli
