#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <chrono>
#include <memory>

namespace zel {

/// Catches SIGTERM and SIGINT. Ignores SIGPIPE and SIGXFSZ, so that a log without a reader or a
/// file at its size limit does not end the process.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

    using Clock = std::chrono::steady_clock;

    /// Checks for a signal now, not when the event loop continues. Because this costs a system
    /// call, it does nothing if the last check is not older than `age`.
    void poll(Clock::duration age = {});

signals:
    void arrived();

private:
    int m_descriptor;
    Clock::time_point m_lastCheck;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zel
