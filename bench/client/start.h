#pragma once

/// Seconds of a monotonic clock.
double now(void);

/// Starts the command and returns the seconds until the service's name has an owner. Then ends the
/// process with SIGTERM and waits for it.
double measure_start(char **command);
