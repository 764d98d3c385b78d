#include "commands/Commands.h"

#include "text/Format.h"
#include "text/Text.h"

namespace commands {
namespace {

// The reserved action is not counted.
QString contentOf(const client::Phone &phone, QJsonObject &row)
{
    const int keys = static_cast<int>(phone.keys().size());
    const int actions = static_cast<int>(phone.actions().size()) - 1;
    row.insert("keys"_s, keys);
    row.insert("actions"_s, actions);
    return format("%1 and %2", text::counted(keys, "key"_s), text::counted(actions, "action"_s));
}

void runRestore(const client::Phone &phone, const QString &method)
{
    try {
        phone.runHook(method);
    } catch (Failure &failure) {
        if (failure.status == ExitStatus::TimeRanOut)
            failure.advice =
                "The restore may still be running: see \"progkeysctl status\". Allow more time "
                "with --timeout."_s;
        throw;
    }
}

void restore(cli::Session &session, const cli::Arguments &arguments)
{
    const QString what = arguments.text("default|factory");
    QJsonObject row = {{"restored"_s, what}};
    if (!arguments.has("--yes"))
        throw Failure{
            ExitStatus::Usage,
            format("This deletes %1, including those of users", contentOf(session.phone(), row)),
            "Confirm with --yes. \"progkeysctl export\" saves the keys and actions of users."_s};
    runRestore(session.phone(), what == "factory"_s ? "restoreFactory"_s : "restoreDefault"_s);
    const QString content = contentOf(session.phone(), row);
    session.out().done(format("Restored the provisioned defaults: %1.", content), row);
}

} // namespace

cli::Command restoreCommand()
{
    return cli::command("restore",
                        "delete all keys and actions and restore the provisioned defaults",
                        {cli::parameter("default|factory",
                                        "the state to restore; both do the same in this service"),
                         cli::parameter("--yes", "confirm the deletion")},
                        {"restored"_s, "keys"_s, "actions"_s}, restore);
}

} // namespace commands
