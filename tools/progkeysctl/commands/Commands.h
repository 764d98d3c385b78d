#pragma once

#include "cli/Command.h"
#include "cli/Session.h"

/// The commands. Their help says what they do.
namespace commands {

/// The tool as a group, and all commands, in the order in which help shows them.
QList<cli::Command> all();

cli::Command statusCommand();
cli::Command waitCommand();
QList<cli::Command> keyCommands();
QList<cli::Command> actionCommands();
QList<cli::Command> moduleCommands();
cli::Command pressCommand();
cli::Command monitorCommand();
QList<cli::Command> exchangeCommands();
QList<cli::Command> defaultsCommands();
cli::Command restoreCommand();
cli::Command sandboxCommand();
cli::Command helpCommand();

} // namespace commands
