#pragma once

#include <csignal>
#include <optional>

namespace sandbox {

/// The signals that end a process or tell of a child, blocked while this lives, and taken one by
/// one. Those that were ignored before stay so.
class Signals
{
public:
    Signals();
    ~Signals();
    Signals(const Signals &) = delete;
    Signals &operator=(const Signals &) = delete;

    struct Arrived
    {
        int number;
        bool isFromTerminal; ///< sent by the kernel: by a key such as Ctrl-C

        /// Whether it asks for the end. A key does not: that is for whoever has the terminal.
        bool asksForEnd() const;
    };

    static constexpr int Forever = -1;

    /// Waits at most so long for one; may come back without one earlier.
    std::optional<Arrived> next(int timeoutMs) const;

    /// Has them arrive again as before. For a child, before it becomes another program.
    void release() const;

private:
    sigset_t m_awaited;
    sigset_t m_before;
};

} // namespace sandbox
