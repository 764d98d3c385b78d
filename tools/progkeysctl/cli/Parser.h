#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"

#include <memory>

namespace CLI {
class App;
}

namespace cli {

/// A command line, taken apart. Its values are not checked yet.
struct ParsedLine
{
    const Command *command = nullptr; ///< the command or group that is named, if one is
    Arguments arguments;              ///< of the command, and of all commands
    QStringList unexpected;           ///< words that belong to nothing
};

/// Takes command lines apart. This is the only place that knows the library that does it.
class Parser
{
public:
    /// The options of all commands, and the commands, groups before their members.
    Parser(const QList<Parameter> &common, const QList<Command> &commands);
    ~Parser();
    Parser(const Parser &) = delete;
    Parser &operator=(const Parser &) = delete;

    /// Throws a Failure of status Usage if an option lacks its value.
    ParsedLine parse(int argc, char **argv);

private:
    void addCommand(const Command &command);
    CLI::App *appOf(const Command &command) const;

    QList<Parameter> m_common;
    QList<Command> m_commands;
    std::unique_ptr<CLI::App> m_app;
};

} // namespace cli
