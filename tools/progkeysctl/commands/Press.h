#pragma once

#include "cli/Session.h"
#include "outcome/ExitStatus.h"

namespace commands {

/// A key of an add-on module, as its hardware knows it.
struct ModuleKeyPlace
{
    int addr = 0;
    int number = 0;
    int moduleType = 1;
};

/// The place that `ADDR/NUM` names; throws a Failure of status Usage if it is none.
ModuleKeyPlace placeOf(const QString &text, int moduleType);

/// Sends the event of a key press, as the module's driver would, and tells what the service makes
/// of it. A key that is not programmed is an answer, too.
ExitStatus press(cli::Session &session, const ModuleKeyPlace &place);

} // namespace commands
