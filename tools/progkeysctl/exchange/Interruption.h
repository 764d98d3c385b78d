#pragma once

namespace exchange {

/// While it lives, SIGINT, SIGTERM and SIGHUP do not end the process but are remembered, so that
/// what is being done can be finished and told.
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool hasCome() const;
};

} // namespace exchange
