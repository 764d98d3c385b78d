#pragma once

#include "cli/Command.h"

/// The commands. Each function is defined in the file of its name.
namespace commands {

/// All commands, in the order in which help shows them.
QList<cli::Command> all();

/// `status`: the state of the service, its bus, its keys and actions, and other modules.
cli::Command statusCommand();

/// `wait`: waits until the service, or another module, is running.
cli::Command waitCommand();

/// `key list`, `show`, `add`, `set`, `move` and `delete`.
QList<cli::Command> keyCommands();

/// `action list`, `show`, `add`, `set` and `delete`.
QList<cli::Command> actionCommands();

/// `icon` and `label`: the display of an add-on module.
QList<cli::Command> moduleCommands();

/// `press`: presses a key of an add-on module, as the module's driver does.
cli::Command pressCommand();

/// `monitor`: shows events as they arrive.
cli::Command monitorCommand();

/// `export` and `import`: the keys and actions of users.
QList<cli::Command> exchangeCommands();

/// `defaults check`, `defaults convert` and `defaults plan`: the settings that provision a phone.
QList<cli::Command> defaultsCommands();

/// `restore`: deletes all rows and restores the provisioned defaults.
cli::Command restoreCommand();

/// `sandbox`: runs a command with a private phone.
cli::Command sandboxCommand();

/// `help`: the same as --help, and the list of all commands.
cli::Command helpCommand();

} // namespace commands
