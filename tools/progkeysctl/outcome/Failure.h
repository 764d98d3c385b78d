#pragma once

#include "outcome/ExitStatus.h"

#include <QString>

/// Thrown by whatever cannot go on: what went wrong, in a sentence without a full stop, and what to
/// do next, if there is something. main() says both on stderr and ends with the status.
struct Failure
{
    ExitStatus status = ExitStatus::Failed;
    QString message;
    QString advice;
};
