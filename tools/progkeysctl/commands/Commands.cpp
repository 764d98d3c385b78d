#include "commands/Commands.h"

#include "commands/ActionCommands.h"
#include "commands/DefaultsCommands.h"
#include "commands/ExchangeCommands.h"
#include "commands/HelpCommand.h"
#include "commands/KeyCommands.h"
#include "commands/ModuleCommands.h"
#include "commands/MonitorCommand.h"
#include "commands/RestoreCommand.h"
#include "commands/SandboxCommand.h"
#include "commands/StatusCommand.h"
#include "commands/WaitCommand.h"

namespace commands {

QList<cli::Command> all()
{
    return QList<cli::Command>{statusCommand(), waitCommand()} + keyCommands() + actionCommands() +
           moduleCommands() + QList<cli::Command>{monitorCommand()} + exchangeCommands() +
           defaultsCommands() +
           QList<cli::Command>{restoreCommand(), sandboxCommand(), helpCommand()};
}

} // namespace commands
