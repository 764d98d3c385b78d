#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <memory>

namespace zel {

/// Catches SIGTERM and SIGINT, which end the process no other way from then on. SIGPIPE and
/// SIGXFSZ are ignored: neither a log that nobody reads any more nor a file that may not grow is a
/// reason to end.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

    using Clock = std::chrono::steady_clock;

    /// Looks whether a signal has arrived, without waiting for the event loop to come round to it.
    /// A look costs a system call; one that is no older than `age` counts as this one.
    void poll(Clock::duration age = {});

signals:
    void arrived();

private:
    int m_descriptor;
    Clock::time_point m_lastLook;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zel
