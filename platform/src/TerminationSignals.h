#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace zel {

/// Turns SIGTERM and SIGINT into the orderly end of the event loop, for as long as it exists.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;

private:
    void quit() const;

    int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace zel
