#include "TerminationSignals.h"

#include "zelcore/ZELLogger.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace zel {
namespace {

sigset_t terminationSignals()
{
    sigset_t mask;
    sigemptyset(&mask);
    sigaddset(&mask, SIGTERM);
    sigaddset(&mask, SIGINT);
    return mask;
}

} // namespace

// The signals are blocked before the bus library starts its thread, which inherits the mask. Thus
// they arrive only at the descriptor.
TerminationSignals::TerminationSignals()
{
    // Without these signals, the failed write returns an error.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const sigset_t mask = terminationSignals();
    pthread_sigmask(SIG_BLOCK, &mask, nullptr);
    m_descriptor = signalfd(-1, &mask, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_descriptor < 0) {
        logger().warning(
            QStringLiteral("Cannot watch for termination signals: they end the process at once"));
        pthread_sigmask(SIG_UNBLOCK, &mask, nullptr);
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { poll(); });
}

// The signals stay blocked, so that a second signal does not interrupt the rest, such as closing a
// database.
TerminationSignals::~TerminationSignals()
{
    m_notifier.reset();
    if (m_descriptor >= 0)
        close(m_descriptor);
}

void TerminationSignals::poll(Clock::duration age)
{
    const Clock::time_point now = Clock::now();
    if (now - m_lastCheck < age)
        return;
    m_lastCheck = now;
    bool hasArrived = false;
    signalfd_siginfo received = {};
    while (read(m_descriptor, &received, sizeof received) == sizeof received)
        hasArrived = true;
    if (hasArrived)
        emit arrived();
}

} // namespace zel
