#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"

namespace cli {

/// A parsed command line. Its values are valid, but a command or a required one may be missing.
struct ParsedLine
{
    const Command *command = nullptr; ///< the command or group that is named, if one is
    Arguments arguments;              ///< those of the command and of all commands
};

/// Parses the words after the name of the program. Each group stands before its members in
/// `commands`, to which the result points. Throws a Failure of status Usage for an unknown word, a
/// value that is missing or invalid, or options that exclude each other.
ParsedLine parse(const QList<Command> &commands, const QList<QByteArray> &words);

/// Throws a Failure of status Usage if the line names no command or lacks a required value.
void requireComplete(const ParsedLine &line);

} // namespace cli
