#include "sandbox/Signals.h"

#include <ctime>

namespace sandbox {
namespace {

bool isIgnored(int number)
{
    struct sigaction action = {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

Signals::Signals() : m_awaited(), m_before()
{
    // Children of a process that ignores SIGCHLD leave no status behind.
    (void)std::signal(SIGCHLD, SIG_DFL);
    sigemptyset(&m_awaited);
    for (const int number : {SIGCHLD, SIGCONT, SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGTTOU}) {
        if (!isIgnored(number))
            sigaddset(&m_awaited, number);
    }
    pthread_sigmask(SIG_BLOCK, &m_awaited, &m_before);
}

Signals::~Signals()
{
    release();
}

bool Signals::Arrived::asksForEnd() const
{
    if (number == SIGINT || number == SIGQUIT)
        return !isFromTerminal;
    return number == SIGTERM || number == SIGHUP;
}

std::optional<Signals::Arrived> Signals::next(int timeoutMs) const
{
    const timespec limit = {timeoutMs / 1000, (timeoutMs % 1000) * 1'000'000L};
    siginfo_t info = {};
    const int number = sigtimedwait(&m_awaited, &info, timeoutMs == Forever ? nullptr : &limit);
    if (number < 0)
        return std::nullopt;
    return Arrived{number, info.si_code == SI_KERNEL};
}

void Signals::release() const
{
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

} // namespace sandbox
