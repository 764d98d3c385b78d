#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

namespace zel {

/// Feeds the service manager's watchdog for this process. A timer of the event loop feeds it at
/// half its interval, so that the watchdog detects a blocked loop. Code that blocks the loop for a
/// long time calls `feed`.
class Watchdog : public QObject
{
public:
    Watchdog();

    /// Whether there is a watchdog for this process.
    bool isAwaited() const { return m_interval.count() > 0; }

    /// The interval at which the event loop feeds.
    std::chrono::milliseconds period() const { return m_timer.intervalAsDuration(); }

    /// Feeds the watchdog, unless it was fed within the last quarter of the interval.
    void feed();

private:
    using Clock = std::chrono::steady_clock;

    void feedNow();

    std::chrono::microseconds m_interval;
    Clock::time_point m_lastFed = Clock::now();
    QTimer m_timer;
};

} // namespace zel
