#pragma once

#include <QString>

/// The exit status of the process. Scripts rely on the numbers.
enum class ExitStatus {
    Done = 0,
    Failed = 1,
    Usage = 2,
    TimeRanOut = 3,
    InvalidText = 4,
    AccessDenied = 5,
    NotRunning = 8,
    NotFound = 10,
    Changes = 20, ///< `defaults plan --detailed-exitcode` found changes
};

/// Thrown if a command cannot continue. The message is a sentence without a full stop; the advice,
/// if any, is complete sentences about what to do next. The command line prints both on stderr and
/// exits with the status.
struct Failure
{
    ExitStatus status = ExitStatus::Failed;
    QString message;
    QString advice = {};
};
