#include "sandbox/Children.h"

#include "sandbox/ProcessTable.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <utility>

namespace sandbox {
namespace {

constexpr int TickMs = 10;
constexpr int GraceMs = 2000;

End endOf(int status)
{
    if (WIFSIGNALED(status))
        return {128 + WTERMSIG(status), true};
    return {WEXITSTATUS(status), false};
}

// A process that is stopped must go on to notice.
void tell(pid_t pid, int signal)
{
    kill(pid, signal);
    kill(pid, SIGCONT);
}

} // namespace

Children::Children(const Signals &arrivals)
    : m_signals(arrivals), m_earlier(childrenOfThisProcess())
{
    prctl(PR_SET_CHILD_SUBREAPER, 1);
}

Children::~Children()
{
    finishAllBut({});
}

pid_t Children::start(const Program &program)
{
    const pid_t child = launch(program, m_signals);
    // The number may have been another child's before.
    m_ended.remove(child);
    return child;
}

void Children::reap()
{
    int status = 0;
    for (pid_t pid = 0; (pid = waitpid(-1, &status, WNOHANG | WUNTRACED)) > 0;) {
        if (WIFSTOPPED(status))
            m_stopped.append(pid);
        else
            m_ended.insert(pid, endOf(status));
    }
}

std::optional<End> Children::end(pid_t child) const
{
    const auto found = m_ended.find(child);
    return found == m_ended.end() ? std::nullopt : std::optional(*found);
}

bool Children::hasStopped(pid_t child)
{
    return m_stopped.removeAll(child) > 0;
}

bool Children::waitFor(pid_t child, int limitMs)
{
    const QDeadlineTimer deadline(limitMs);
    for (reap(); !end(child) && !deadline.hasExpired(); reap())
        m_signals.next(TickMs);
    return end(child).has_value();
}

std::optional<End> Children::finish(pid_t child, int signal, int limitMs)
{
    reap();
    if (!end(child))
        tell(child, signal);
    if (waitFor(child, limitMs))
        return end(child);
    tell(child, SIGKILL);
    waitFor(child, GraceMs);
    return std::nullopt;
}

QList<pid_t> Children::allBut(const QList<pid_t> &spared)
{
    reap();
    QList<pid_t> children = childrenOfThisProcess();
    const auto isSpared = [&](pid_t pid) {
        return spared.contains(pid) || m_earlier.contains(pid);
    };
    children.erase(std::remove_if(children.begin(), children.end(), isSpared), children.end());
    return children;
}

void Children::finishAllBut(const QList<pid_t> &spared)
{
    for (const int signal : {SIGTERM, SIGKILL}) {
        QList<pid_t> told;
        const QDeadlineTimer deadline(GraceMs);
        // What they leave behind becomes a child in turn, and is told as well.
        for (auto left = allBut(spared); !left.isEmpty(); left = allBut(spared)) {
            for (const pid_t pid : std::as_const(left)) {
                if (!told.contains(pid))
                    tell(pid, signal);
            }
            told = left;
            if (deadline.hasExpired())
                break;
            m_signals.next(TickMs);
        }
    }
}

} // namespace sandbox
