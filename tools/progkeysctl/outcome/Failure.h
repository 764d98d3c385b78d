#pragma once

#include "outcome/ExitStatus.h"

#include <QString>

/// Thrown if a command cannot continue. The message is a sentence without a full stop; the advice,
/// if any, is complete sentences about what to do next. The command line prints both on stderr and
/// exits with the status.
struct Failure
{
    ExitStatus status = ExitStatus::Failed;
    QString message;
    QString advice = {};
};
