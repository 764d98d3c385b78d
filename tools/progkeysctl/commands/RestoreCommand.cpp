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

// The reserved action is not counted.
QString contentOf(const client::ProgrammableKeys &service, QJsonObject &row)
{
    const int keys = static_cast<int>(service.keys().size());
    const int actions = static_cast<int>(service.actions().size()) - 1;
    row.insert(QStringLiteral("keys"), keys);
    row.insert(QStringLiteral("actions"), actions);
    return QStringLiteral("%1 and %2")
        .arg(output::counted(keys, QStringLiteral("key")),
             output::counted(actions, QStringLiteral("action")));
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
    QJsonObject row = {{QStringLiteral("restored"), what}};
    session.out().requireFields(columns());
    if (!arguments.has("--yes"))
        throw Failure{
            ExitStatus::Usage,
            QStringLiteral("This deletes %1, including those of users")
                .arg(contentOf(session.service(), row)),
            QStringLiteral("Confirm with --yes. \"progkeysctl export\" saves the keys and "
                           "actions of users.")};
    runRestore(session.service(), what == QLatin1String("factory")
                                      ? QStringLiteral("restoreFactory")
                                      : QStringLiteral("restoreDefault"));
    const QString content = contentOf(session.service(), row);
    session.out().done(QStringLiteral("Restored the provisioned defaults: %1.").arg(content),
                       columns(), row);
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
