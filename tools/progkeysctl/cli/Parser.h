#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"

namespace cli {

/// A parsed command line. Its values are valid. With --help or --version, the command may be a
/// group, and required values may be missing.
struct ParsedLine
{
    const Command *command = nullptr; ///< the command or group that is named, or the whole tool
    Arguments arguments;              ///< those of the command and of all commands
};

/// Parses the words after the name of the program. Each group stands before its members in
/// `commands`, to which the result points; the first one is the whole tool. Throws a Failure of
/// status Usage.
ParsedLine parse(const QList<Command> &commands, const QList<QByteArray> &words);

} // namespace cli
