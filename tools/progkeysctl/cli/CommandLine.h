#pragma once

#include "cli/Command.h"
#include "outcome/Failure.h"

namespace cli {

/// Parses the words after the name of the program and runs the command. Each group stands before
/// its members in `commands`, in the order in which help shows them. Throws a Failure if the line
/// is invalid or the command fails.
ExitStatus run(const QList<Command> &commands, const QList<QByteArray> &words);

} // namespace cli
