#pragma once

#include <array>
#include <csignal>

namespace exchange {

/// While it lives, SIGINT, SIGTERM and SIGHUP do not end the process but are remembered, so that
/// what is being done can be finished and told. One that is ignored, as nohup does, stays so.
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool hasCome() const;

private:
    static constexpr std::array Signals = {SIGINT, SIGTERM, SIGHUP};
    std::array<struct sigaction, Signals.size()> m_before{};
};

} // namespace exchange
