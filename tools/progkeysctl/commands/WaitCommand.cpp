#include "commands/Commands.h"

#include "text/Format.h"

#include <QDeadlineTimer>
#include <QThread>

namespace commands {
namespace {

constexpr double WaitSeconds = 30;
constexpr unsigned long PollMs = 20;

void waitFor(cli::Session &session, const QString &module)
{
    const QDeadlineTimer deadline(session.timeoutMs(WaitSeconds));
    while (!session.phone().isRunning(module)) {
        if (deadline.hasExpired())
            throw Failure{ExitStatus::TimeRanOut,
                          format("%1 is not running on %2", module, session.phone().busName()),
                          "See its log, or allow more time with --timeout."_s};
        QThread::msleep(PollMs);
    }
}

void wait(cli::Session &session, const cli::Arguments &arguments)
{
    const QString module = arguments.has("MODULE") ? arguments.text("MODULE") : client::Service;
    waitFor(session, module);
    // In scripts, another command often prints its results next.
    if (session.out().isForPeople())
        output::note(format("%1 is running.", module));
    else
        session.out().record({{"running"_s, true}});
}

} // namespace

cli::Command waitCommand()
{
    return cli::command(
        "wait", "wait until the service is running, for up to 30 s or --timeout",
        {cli::parameter("[MODULE]", "another module of the phone, such as SettingsManager",
                        cli::check::notEmpty)},
        {"running"_s}, wait);
}

} // namespace commands
