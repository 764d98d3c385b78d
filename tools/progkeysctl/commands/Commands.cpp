#include "commands/Commands.h"

#include "commands/ActionCommands.h"
#include "commands/CompletionCommands.h"
#include "commands/DefaultsCommands.h"
#include "commands/ExchangeCommands.h"
#include "commands/KeyCommands.h"
#include "commands/ModuleCommands.h"
#include "commands/MonitorCommand.h"
#include "commands/RestoreCommand.h"
#include "commands/SandboxCommand.h"
#include "commands/StatusCommand.h"
#include "commands/WaitCommand.h"

namespace commands {

void addAll(cli::CommandLine &line)
{
    addStatusCommand(line);
    addWaitCommand(line);
    addKeyCommands(line);
    addActionCommands(line);
    addModuleCommands(line);
    addMonitorCommand(line);
    addExchangeCommands(line);
    addDefaultsCommands(line);
    addRestoreCommand(line);
    addSandboxCommand(line);
    addCompletionCommands(line);
}

} // namespace commands
