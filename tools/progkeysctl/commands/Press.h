#pragma once

#include "cli/Session.h"
#include "outcome/ExitStatus.h"

namespace commands {

/// A key of an add-on module, as the module's driver reports it.
struct ModuleKeyPlace
{
    int addr = 0;
    int number = 0;
    int moduleType = 1;
};

/// Reads `ADDRESS/NUMBER`. Throws a Failure of status Usage if the text is something else.
ModuleKeyPlace placeOf(const QString &text, int moduleType);

/// Sends the event of a key press, as the module's driver does, and shows the answer of the
/// service.
ExitStatus press(cli::Session &session, const ModuleKeyPlace &place);

} // namespace commands
