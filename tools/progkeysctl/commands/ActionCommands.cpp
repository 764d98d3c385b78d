#include "commands/Commands.h"

#include "commands/RecordCommands.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QJsonArray>

namespace commands {
namespace {

void list(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    output::Listing listing;
    const ListAction actions = session.phone().actions();
    for (const Action &action : actions)
        listing.rows.append(fields::toJson(action));
    listing.legend = text::counted(listing.rows.size(), "action"_s);
    session.out().list(listing);
}

QString keysText(const QJsonArray &ids)
{
    return format("%1 %2", ids.size() == 1 ? "key"_s : "keys"_s, output::displayText(ids));
}

// The action with its keys, which are deleted or, if they are provisioned, left without an action.
QJsonObject rowOf(const Action &action, const ListKey &keys)
{
    QJsonArray deleted;
    QJsonArray left;
    for (const Key &key : keys)
        if (key.idAction == action.idAction)
            (key.dmId.isEmpty() ? deleted : left).append(output::jsonNumber(key.idKey));
    QJsonObject row = fields::toJson(action);
    row.insert("keysDeleted"_s, deleted);
    row.insert("keysLeft"_s, left);
    return row;
}

QString announcement(const Action &action, const QJsonObject &row)
{
    const QJsonArray deleted = row.value("keysDeleted"_s).toArray();
    const QJsonArray left = row.value("keysLeft"_s).toArray();
    const QString text = format("Action %1 \"%2\": deletes %3", action.idAction, action.label,
                                deleted.isEmpty() ? "no keys"_s : keysText(deleted));
    return left.isEmpty()
               ? text + QLatin1Char('.')
               : format("%1; leaves provisioned %2 without an action.", text, keysText(left));
}

void requireDeleted(const Action &action, int code)
{
    if (code == ResultCode::Success)
        return;
    const QString what = format("Action %1", action.idAction);
    if (action.idAction == ReservedActionId)
        throw Failure{ExitStatus::Failed,
                      what + " cannot be deleted: it is the reserved action (-2)"_s,
                      "You can change it."_s};
    throw notDeleted(what, action.dmId, code,
                     "It stays even if it is removed from the setting DefaultActions; after that, "
                     "\"progkeysctl restore\" deletes it."_s);
}

QJsonObject removeOne(cli::Session &session, qlonglong idAction, bool isDryRun)
{
    const auto action = existing<Action>(session.phone(), idAction);
    QJsonObject row = rowOf(action, session.phone().keys());
    requireDeleted(action, fields::isUsers(action) ? ResultCode::Success : ResultCode::Refused);
    // Before the deletion, so that the keys are known even if it fails.
    session.out().say(text::printable(announcement(action, row)));
    session.out().flush();
    if (!isDryRun) {
        requireDeleted(action, session.phone().call<int>("deleteAction", idAction));
        session.out().say(format("Deleted action %1.", idAction));
    }
    return row;
}

void remove(cli::Session &session, const cli::Arguments &arguments)
{
    const bool isDryRun = arguments.has("--dry-run");
    deleteEach(session, arguments.values("ACTION_ID"),
               [&](qlonglong id) { return removeOne(session, id, isDryRun); });
}

} // namespace

QList<cli::Command> actionCommands()
{
    const QStringList columns = fields::namesOf(fields::of<Action>());
    const cli::Parameter action =
        cli::parameter("ACTION_ID", "identifier of the action", cli::check::id);
    const cli::Parameter actions =
        cli::parameter("ACTION_ID...", "identifiers of the actions", cli::check::id);
    const cli::Parameter assignments =
        cli::parameter("FIELD=VALUE...", "a field and its value", cli::check::utf8);
    const cli::Parameter dryRun =
        cli::parameter("--dry-run", "show which keys would be deleted, but delete nothing");
    return {cli::group({"action"_s}, "list, add, change and delete actions"),
            cli::command("action list", "list actions", {}, columns, list),
            cli::command("action show", "show an action", {action}, columns, showRecord<Action>),
            withFields<Action>(cli::command("action add", "add an action", {assignments}, columns,
                                            addRecord<Action>),
                               "type=1 action=call arguments=501 label=Reception shortLabel=Rec"),
            withFields<Action>(cli::command("action set", "change fields of an action",
                                            {action, assignments}, columns, setRecord<Action>),
                               "7 label=Reception"),
            cli::command("action delete", "delete actions and the keys that trigger them",
                         {actions, dryRun}, columns, remove)};
}

} // namespace commands
