#pragma once

#include <QCoreApplication>
#include <QString>

#include <chrono>
#include <memory>

class ZELException;

namespace zel {
class TerminationSignals;
}

/// The application object of a module's process. It ends the event loop with status 0 on SIGTERM
/// and SIGINT, and nothing that a module throws as a ZELException pointer gets past it.
class ZELApplication : public QCoreApplication
{
    Q_OBJECT
    Q_PROPERTY(QString dataRoot READ dataRoot CONSTANT)

public:
    ZELApplication(int &argc, char **argv);
    ~ZELApplication() override;

    /// The directory under which each module has its own, with a slash at its end: ZEL_DATA_ROOT,
    /// or `/data/ZELApplication/`.
    static QString dataRoot();

    /// Ends the event loop with status 0 as soon as it comes round. What it has in hand is done;
    /// bus calls that still wait are refused, because each may block for seconds.
    static void end();

    /// Is the process on its way out, or a termination signal there that says so? The news about
    /// signals may be as old as `age`.
    static bool isEnding(std::chrono::milliseconds age = {});

    /// Logs the exception at error level and deletes it.
    static void dispose(ZELException *exception);

    bool notify(QObject *receiver, QEvent *event) override;

private:
    std::unique_ptr<zel::TerminationSignals> m_signals;
    bool m_isEnding = false;
};
