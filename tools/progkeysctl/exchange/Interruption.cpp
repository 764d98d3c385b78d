#include "exchange/Interruption.h"

namespace exchange {
namespace {

volatile std::sig_atomic_t theSignal = 0;

void remember(int signal)
{
    theSignal = signal;
}

} // namespace

Interruption::Interruption()
{
    theSignal = 0;
    struct sigaction action = {};
    action.sa_handler = remember;
    action.sa_flags = SA_RESTART;
    for (std::size_t place = 0; place < Signals.size(); ++place) {
        sigaction(Signals.at(place), nullptr, &m_before.at(place));
        if (m_before.at(place).sa_handler != SIG_IGN)
            sigaction(Signals.at(place), &action, nullptr);
    }
}

Interruption::~Interruption()
{
    for (std::size_t place = 0; place < Signals.size(); ++place)
        sigaction(Signals.at(place), &m_before.at(place), nullptr);
}

bool Interruption::hasCome() const
{
    return theSignal != 0;
}

} // namespace exchange
