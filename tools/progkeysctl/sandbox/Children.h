#pragma once

#include "sandbox/Program.h"
#include "sandbox/Signals.h"

#include <QHash>
#include <QList>

#include <optional>

namespace sandbox {

/// How a child ended.
struct End
{
    int status; ///< its exit status, or 128 and the number of the signal that killed it
    bool wasKilled;
};

/// The children that this process has from now on, those included that it adopts as their own
/// parents end. None is left when this goes.
class Children
{
public:
    explicit Children(const Signals &arrivals);
    ~Children();
    Children(const Children &) = delete;
    Children &operator=(const Children &) = delete;

    /// Throws CannotRun.
    pid_t start(const Program &program);

    /// Takes note of those that have ended or stopped.
    void reap();

    /// How a child has ended, if it has.
    std::optional<End> end(pid_t child) const;

    /// Whether the child has stopped, as by job control, since this was last asked.
    bool hasStopped(pid_t child);

    /// Asks the child to end by a signal, and kills it after `limitMs`. How it ended; nothing if
    /// it had to be killed.
    std::optional<End> finish(pid_t child, int signal, int limitMs);

    /// Ends all but these: asks first, and kills then.
    void finishAllBut(const QList<pid_t> &spared);

private:
    bool waitFor(pid_t child, int limitMs);
    QList<pid_t> allBut(const QList<pid_t> &spared);

    const Signals &m_signals;
    const QList<pid_t> m_earlier; ///< are somebody else's business
    QHash<pid_t, End> m_ended;
    QList<pid_t> m_stopped;
};

} // namespace sandbox
