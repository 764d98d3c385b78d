#pragma once

/// Starts the command and returns the seconds until the service's name has an owner. The process is
/// ended before this returns.
double measure_start(char **command);
