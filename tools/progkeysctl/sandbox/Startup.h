#pragma once

#include "outcome/Failure.h"
#include "sandbox/Children.h"
#include "sandbox/Directory.h"

#include <functional>

namespace sandbox {

/// Thrown when the end is asked for before everything is up.
struct Interrupted
{
    int signal;
};

/// Waits for one program after the other to come up.
class Startup
{
public:
    Startup(Children &children, const Signals &arrivals, const Directory &directory, int limitMs);

    /// Starts the program of that name, whose output becomes its log, and returns once it is ready.
    /// If it ends before, or time runs out, shows the end of the log on stderr and throws a
    /// Failure; throws Interrupted if a signal asks for the end.
    pid_t bring(const QString &name, const Program &program, const std::function<bool()> &isReady);

private:
    void look(const QString &name, pid_t pid) const;
    Failure failure(ExitStatus status, const QString &name, const QString &reason) const;

    Children &m_children;
    const Signals &m_signals;
    const Directory &m_directory;
    int m_limitMs;
};

} // namespace sandbox
