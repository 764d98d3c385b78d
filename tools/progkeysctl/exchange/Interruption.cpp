#include "exchange/Interruption.h"

#include <array>
#include <csignal>

namespace exchange {
namespace {

constexpr std::array Signals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t theSignal = 0;

void remember(int signal)
{
    theSignal = signal;
}

void setHandlers(void (*handler)(int))
{
    for (const int signal : Signals) {
        struct sigaction action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

Interruption::Interruption()
{
    theSignal = 0;
    setHandlers(remember);
}

Interruption::~Interruption()
{
    setHandlers(SIG_DFL);
}

bool Interruption::hasCome() const
{
    return theSignal != 0;
}

} // namespace exchange
