#pragma once

#include <QCoreApplication>
#include <QString>

#include <chrono>
#include <memory>

class ZELException;

namespace zel {
class TerminationSignals;
}

/// The application object of a module's process. SIGTERM and SIGINT end its event loop with status
/// 0. It catches all ZELException pointers that a module throws.
class ZELApplication : public QCoreApplication
{
    Q_OBJECT
    Q_PROPERTY(QString dataRoot READ dataRoot CONSTANT)

public:
    ZELApplication(int &argc, char **argv);
    ~ZELApplication() override;

    /// The directory with the data directories of all modules: ZEL_DATA_ROOT, or
    /// `/data/ZELApplication/`. It ends with a slash.
    static QString dataRoot();

    /// Ends the event loop with status 0 after the current event. Waiting calls are refused,
    /// because each call can block for seconds.
    static void end();

    /// Whether the process is ending or has received a termination signal. The last check for
    /// signals may be as old as `age`.
    static bool isEnding(std::chrono::milliseconds age = {});

    /// Logs the exception at error level and deletes it.
    static void dispose(ZELException *exception);

    bool notify(QObject *receiver, QEvent *event) override;

private:
    std::unique_ptr<zel::TerminationSignals> m_signals;
    bool m_isEnding = false;
};
