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

    /// Looks for a signal now; otherwise the event loop does. A look costs a system call, so it is
    /// left out if the last one is no older than `age`.
    void poll(Clock::duration age = {});

signals:
    void arrived();

private:
    int m_descriptor;
    Clock::time_point m_lastLook;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zel
