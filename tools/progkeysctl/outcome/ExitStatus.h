#pragma once

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
