#include "commands/RestoreCommand.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "client/Lifecycle.h"
#include "commands/Counted.h"
#include "outcome/Failure.h"

namespace commands {
namespace {

QList<output::Column> columns()
{
    return {{QStringLiteral("restored"), QStringLiteral("Restored to")},
            {QStringLiteral("keys"), QStringLiteral("Keys"), true},
            {QStringLiteral("actions"), QStringLiteral("Actions"), true}};
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
        .arg(counted(counts.keys, "key"), counted(counts.actions, "action"));
}

void runRestore(const client::Bus &bus, const QString &method)
{
    try {
        client::runHook(bus, method);
    } catch (Failure &failure) {
        if (failure.status == ExitStatus::TimeRanOut)
            failure.advice = QStringLiteral("It may still be at it: \"progkeysctl status\" tells "
                                            "what there is. Give it longer with --timeout.");
        throw;
    }
}

ExitStatus restore(cli::Session &session, const cli::Arguments &arguments)
{
    const QString what = arguments.text("default|factory");
    session.out().requireFields(columns());
    if (!arguments.has("--yes"))
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("This deletes every key and action, %1 now, also those that "
                                     "users made, and merges the provisioned defaults afresh")
                          .arg(text(counts(session.service()))),
                      QStringLiteral("If that is meant, say --yes; \"progkeysctl export\" keeps "
                                     "what users made.")};
    runRestore(session.bus(), what == QLatin1String("factory") ? QStringLiteral("restoreFactory")
                                                               : QStringLiteral("restoreDefault"));
    const Counts now = counts(session.service());
    session.out().done(QStringLiteral("Restored; there are %1 now.").arg(text(now)), columns(),
                       {{QStringLiteral("restored"), what},
                        {QStringLiteral("keys"), now.keys},
                        {QStringLiteral("actions"), now.actions}});
    return ExitStatus::Done;
}

} // namespace

cli::Command restoreCommand()
{
    return cli::command(
        "restore", "delete everything and merge the provisioned defaults afresh",
        {cli::argument("default|factory",
                       cli::type::choice({QStringLiteral("default"), QStringLiteral("factory")}),
                       "to which state; both do the same in this service"),
         cli::flag("--yes", "yes, delete everything")},
        restore);
}

} // namespace commands
