#pragma once

#include "cli/Command.h"
#include "cli/Parser.h"

namespace cli {

/// The command line: the options of all commands, and the commands.
class CommandLine
{
public:
    /// Each group before its members, in the order in which help shows them.
    explicit CommandLine(const QList<Command> &commands);

    const QList<Command> &commands() const { return m_commands; }

    /// Parses the line and runs the command; prints what went wrong on stderr. The exit status.
    int execute(int argc, char **argv);

    /// Prints help on the command of these words, or on the whole tool for none. Throws a Failure
    /// of status Usage if there is no such command.
    void printHelp(const QStringList &words) const;

private:
    ExitStatus run(int argc, char **argv);

    QList<Command> m_commands;
    Parser m_parser;
};

} // namespace cli
