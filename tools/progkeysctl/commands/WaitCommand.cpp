#include "commands/WaitCommand.h"

#include "cli/Session.h"
#include "outcome/Failure.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>

namespace commands {
namespace {

constexpr double WaitSeconds = 30;
// How soon a lost bus is noticed.
constexpr int PulseMs = 100;

QList<output::Column> columns()
{
    return {{QStringLiteral("running"), QStringLiteral("Service running")}};
}

// The watch stands before the question is asked, so that the service cannot come in between unseen.
bool comesUp(cli::Session &session)
{
    QEventLoop loop;
    const QDBusServiceWatcher watcher(zel::serviceName(client::ProgrammableKeys::moduleName()),
                                      session.bus().connection(),
                                      QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &loop,
                     [&loop] { loop.exit(1); });
    if (session.service().isRunning())
        return true;
    QTimer::singleShot(session.timeoutMs(WaitSeconds), &loop, [&loop] { loop.exit(0); });
    QTimer pulse;
    QObject::connect(&pulse, &QTimer::timeout, &loop, [&] {
        if (!session.bus().connection().isConnected())
            loop.exit(0);
    });
    pulse.start(PulseMs);
    const bool isUp = loop.exec() == 1;
    if (!session.bus().connection().isConnected())
        client::throwLost(session.bus());
    return isUp;
}

ExitStatus wait(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    if (!comesUp(session))
        throw Failure{
            ExitStatus::TimeRanOut,
            QStringLiteral("The service is still not there on %1").arg(session.bus().description()),
            QStringLiteral("Its log says why; give it longer with --timeout.")};
    session.out().done(QStringLiteral("The service is up."), columns(),
                       {{QStringLiteral("running"), true}});
    return ExitStatus::Done;
}

} // namespace

cli::Command waitCommand()
{
    return cli::command("wait", "wait until the service is up, at most 30 s or what --timeout says",
                        {}, wait);
}

} // namespace commands
