#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace zel {

/// Feeds the service manager's watchdog for this process: from the event loop, at half the
/// watchdog's interval, and from code that blocks the loop for long. It runs on the loop's thread,
/// so that the watchdog notices a loop that hangs.
class Watchdog : public QObject
{
public:
    Watchdog();

    /// Whether there is a watchdog for this process.
    bool isAwaited() const { return m_interval.count() > 0; }

    /// The interval at which the event loop feeds.
    std::chrono::milliseconds period() const { return m_timer.intervalAsDuration(); }

    /// Feeds, unless the last feeding is less than a quarter of the interval ago.
    void feed();

private:
    using Clock = std::chrono::steady_clock;

    void feedNow();

    std::chrono::microseconds m_interval;
    Clock::time_point m_lastFed;
    QTimer m_timer;
};

} // namespace zel
