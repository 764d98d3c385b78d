#pragma once

#include "cli/Command.h"

namespace cli {

/// The command line: the options of all commands, and the commands.
class CommandLine
{
public:
    /// Each group before its members, in the order in which help shows them.
    explicit CommandLine(const QList<Command> &commands) : m_commands(commands) {}

    const QList<Command> &commands() const { return m_commands; }

    /// Parses the line and runs the command. Prints a failure on stderr. Returns the exit status.
    int execute(int argc, char **argv) const;

    /// Prints help on the command of these words, or on the whole tool for none. Throws a Failure
    /// of status Usage if there is no such command.
    void printHelp(const QList<QByteArray> &words) const;

private:
    ExitStatus run(const QList<QByteArray> &words) const;

    QList<Command> m_commands;
};

} // namespace cli
