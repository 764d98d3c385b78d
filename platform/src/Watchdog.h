#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace zel {

/// Tells a service manager that has a watchdog for this process that the process gets on: from the
/// event loop, at half the watchdog's interval, and from whoever blocks the loop for long but gets
/// on. It lives on the loop's thread, so that a loop that is stuck falls silent.
class Watchdog : public QObject
{
public:
    Watchdog();

    /// Is there a watchdog, and for this very process?
    bool isAwaited() const { return m_interval.count() > 0; }

    /// How often the event loop says that it turns.
    std::chrono::milliseconds period() const { return m_timer.intervalAsDuration(); }

    /// Says so, unless it has been said within the last quarter of the interval.
    void feed();

private:
    using Clock = std::chrono::steady_clock;

    void feedNow();

    std::chrono::microseconds m_interval;
    Clock::time_point m_lastFed;
    QTimer m_timer;
};

} // namespace zel
