#include "sandbox/Guard.h"

#include "outcome/Failure.h"
#include "output/Output.h"
#include "sandbox/Children.h"

#include <csignal>
#include <sys/prctl.h>
#include <unistd.h>

namespace sandbox {
namespace {

Failure cannotFork()
{
    return {ExitStatus::Failed, QStringLiteral("Cannot start another process"),
            QStringLiteral("See whether memory or the number of processes is at its limit.")};
}

int watch(pid_t worker, Children &children, const Signals &arrivals)
{
    for (children.reap(); !children.end(worker); children.reap()) {
        const auto arrived = arrivals.next(Signals::Forever);
        if (arrived && arrived->asksForEnd())
            kill(worker, SIGTERM);
    }
    const auto end = children.end(worker);
    if (end->wasKilled)
        output::warn(QStringLiteral("the sandbox was killed"));
    return end->status;
}

} // namespace

int guarded(const std::function<int(const Signals &)> &work)
{
    const Signals arrivals;
    Children children(arrivals);
    const pid_t guard = getpid();
    const pid_t worker = fork();
    if (worker < 0)
        throw cannotFork();
    if (worker > 0)
        return watch(worker, children, arrivals);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != guard)
        return 128 + SIGTERM;
    return work(arrivals);
}

} // namespace sandbox
