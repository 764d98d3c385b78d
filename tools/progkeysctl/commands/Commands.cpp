#include "commands/Commands.h"

namespace commands {

QList<cli::Command> all()
{
    return QList<cli::Command>{cli::group({}, "manage the programmable keys of the phone"),
                               statusCommand(), waitCommand()} +
           keyCommands() + actionCommands() + moduleCommands() +
           QList<cli::Command>{pressCommand(), monitorCommand()} + exchangeCommands() +
           defaultsCommands() +
           QList<cli::Command>{restoreCommand(), sandboxCommand(), helpCommand()};
}

} // namespace commands
