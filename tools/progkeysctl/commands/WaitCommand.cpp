#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "outcome/Failure.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusServiceWatcher>
#include <QEventLoop>
#include <QTimer>

namespace commands {
namespace {

constexpr double WaitSeconds = 30;
// How often to check whether the bus is lost.
constexpr int PulseMs = 100;

// Watches first and asks then, so that a start in between is not missed.
bool comesUp(cli::Session &session, const QString &name)
{
    QEventLoop loop;
    const QDBusServiceWatcher watcher(name, session.bus().connection(),
                                      QDBusServiceWatcher::WatchForRegistration);
    QObject::connect(&watcher, &QDBusServiceWatcher::serviceRegistered, &loop,
                     [&loop] { loop.exit(1); });
    if (session.bus().hasOwner(name))
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

ExitStatus wait(cli::Session &session, const cli::Arguments &arguments)
{
    const QString module =
        arguments.has("MODULE") ? arguments.text("MODULE") : client::ProgrammableKeys::moduleName();
    if (!comesUp(session, zel::serviceName(module)))
        throw Failure{
            ExitStatus::TimeRanOut,
            QStringLiteral("%1 is not running on %2").arg(module, session.bus().description()),
            QStringLiteral("See its log, or allow more time with --timeout.")};
    // In scripts, another command often prints its results next.
    if (session.out().isForPeople())
        session.note(QStringLiteral("%1 is running.").arg(module));
    else
        session.out().record({{QStringLiteral("running")}}, {{QStringLiteral("running"), true}});
    return ExitStatus::Done;
}

} // namespace

cli::Command waitCommand()
{
    return cli::command(
        "wait", "wait until the service is running, for up to 30 s or --timeout",
        {cli::parameter("[MODULE]", "another module of the phone, such as SettingsManager",
                        cli::check::notEmpty)},
        wait);
}

} // namespace commands
