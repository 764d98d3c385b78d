#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "outcome/Failure.h"
#include "output/Text.h"

namespace commands {
namespace {

QList<output::Column> columns()
{
    return {{QStringLiteral("restored")},
            {QStringLiteral("keys"), true},
            {QStringLiteral("actions"), true}};
}

struct Counts
{
    int keys = 0;
    int actions = 0; ///< without the reserved one
};

Counts counts(client::ProgrammableKeys &service)
{
    return {static_cast<int>(service.keys().size()),
            static_cast<int>(service.actions().size()) - 1};
}

QString text(const Counts &counts)
{
    return QStringLiteral("%1 and %2")
        .arg(output::counted(counts.keys, QStringLiteral("key")),
             output::counted(counts.actions, QStringLiteral("action")));
}

void runRestore(client::ProgrammableKeys &service, const QString &method)
{
    try {
        service.runHook(method);
    } catch (Failure &failure) {
        if (failure.status == ExitStatus::TimeRanOut)
            failure.advice = QStringLiteral("The restore may still be running: see \"progkeysctl "
                                            "status\". Allow more time with --timeout.");
        throw;
    }
}

ExitStatus restore(cli::Session &session, const cli::Arguments &arguments)
{
    const QString what = arguments.text("default|factory");
    session.out().requireFields(columns());
    if (!arguments.has("--yes"))
        throw Failure{
            ExitStatus::Usage,
            QStringLiteral("This deletes %1, including those of users")
                .arg(text(counts(session.service()))),
            QStringLiteral("Confirm with --yes. \"progkeysctl export\" saves the keys and "
                           "actions of users.")};
    runRestore(session.service(), what == QLatin1String("factory")
                                      ? QStringLiteral("restoreFactory")
                                      : QStringLiteral("restoreDefault"));
    const Counts now = counts(session.service());
    session.out().done(QStringLiteral("Restored the provisioned defaults: %1.").arg(text(now)),
                       columns(),
                       {{QStringLiteral("restored"), what},
                        {QStringLiteral("keys"), now.keys},
                        {QStringLiteral("actions"), now.actions}});
    return ExitStatus::Done;
}

} // namespace

cli::Command restoreCommand()
{
    return cli::command("restore",
                        "delete all keys and actions and restore the provisioned defaults",
                        {cli::parameter("default|factory",
                                        "the state to restore; both do the same in this service"),
                         cli::parameter("--yes", "confirm the deletion")},
                        restore);
}

} // namespace commands
