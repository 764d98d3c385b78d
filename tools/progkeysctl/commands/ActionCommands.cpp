#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/DeleteEach.h"
#include "commands/FieldArguments.h"
#include "commands/Refusals.h"
#include "output/Text.h"

#include <QJsonArray>

namespace commands {
namespace {

ExitStatus list(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    output::Listing listing;
    listing.columns = fields::columns<Action>();
    const ListAction actions = session.service().actions();
    for (const Action &action : actions)
        listing.rows.append(fields::toJson(action));
    listing.legend =
        output::counted(static_cast<int>(listing.rows.size()), QStringLiteral("action"));
    session.out().list(listing);
    return ExitStatus::Done;
}

ExitStatus show(cli::Session &session, const cli::Arguments &arguments)
{
    const Action action = actionOf(session.service(), arguments.id("ACTION_ID"));
    session.out().record(fields::columns<Action>(), fields::toJson(action));
    return ExitStatus::Done;
}

void warnOfIdentifier(const Action &before, const Action &after)
{
    if (!after.dmId.isEmpty())
        output::warn(QStringLiteral("an action with a dmId is treated as provisioned: it cannot be "
                                    "deleted, and a start of the service may overwrite it"));
    else if (!before.dmId.isEmpty())
        output::warn(QStringLiteral("without its dmId, action %1 is no longer provisioned: it can "
                                    "be deleted, and the next start of the service may create the "
                                    "provisioned action again")
                         .arg(before.idAction));
}

ExitStatus add(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Action>());
    Action action;
    fields::assign(action, arguments.texts("FIELD=VALUE"));
    if (action.idAction != Action().idAction)
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("The service assigns the idAction of a new action"),
                      QStringLiteral("Omit idAction.")};
    warnOfIdentifier(Action(), action);
    const qlonglong result = session.service().addAction(action);
    if (result < 0)
        throw additionRefused(result);
    action.idAction = result;
    session.out().done(QStringLiteral("Created action %1.").arg(result), fields::columns<Action>(),
                       fields::toJson(action));
    return ExitStatus::Done;
}

ExitStatus set(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Action>());
    const Action before = actionOf(session.service(), arguments.id("ACTION_ID"));
    Action action = before;
    fields::assign(action, arguments.texts("FIELD=VALUE"));
    if (action.idAction != before.idAction)
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("The idAction of an action cannot be changed"),
                      QStringLiteral("Create another action and delete this one.")};
    warnOfIdentifier(before, action);
    const int code = session.service().modifyAction(action);
    if (code != 0)
        throw actionChangeRefused(session.service(), action.idAction, code);
    session.out().done(QStringLiteral("Changed action %1.").arg(action.idAction),
                       fields::columns<Action>(), fields::toJson(action));
    return ExitStatus::Done;
}

/// The keys of an action that is deleted.
struct BoundKeys
{
    QJsonArray deleted;
    QJsonArray left; ///< provisioned: they stay without an action
};

BoundKeys boundKeys(cli::Session &session, qlonglong idAction)
{
    BoundKeys bound;
    const ListKey keys = session.service().keys();
    for (const Key &key : keys)
        if (key.idAction == idAction)
            (key.dmId.isEmpty() ? bound.deleted : bound.left).append(output::jsonNumber(key.idKey));
    return bound;
}

QString keysText(const QJsonArray &ids)
{
    return QStringLiteral("%1 %2").arg(
        ids.size() == 1 ? QStringLiteral("key") : QStringLiteral("keys"), output::displayText(ids));
}

// Printed before the deletion, so that the keys are known even if it fails.
void announce(cli::Session &session, const Action &action, const BoundKeys &bound)
{
    QString text =
        QStringLiteral("Action %1 \"%2\": deletes %3")
            .arg(QString::number(action.idAction), action.label,
                 bound.deleted.isEmpty() ? QStringLiteral("no keys") : keysText(bound.deleted));
    if (!bound.left.isEmpty())
        text +=
            QStringLiteral("; leaves provisioned %1 without an action").arg(keysText(bound.left));
    session.out().say(output::printable(text + QLatin1Char('.')));
    session.out().flush();
}

QJsonObject removeOne(cli::Session &session, qlonglong idAction, bool isDryRun)
{
    const Action action = actionOf(session.service(), idAction);
    const BoundKeys bound = boundKeys(session, idAction);
    if (!fields::isUsers(action))
        throw actionDeletionRefused(session.service(), idAction, -2);
    announce(session, action, bound);
    if (!isDryRun) {
        const int code = session.service().deleteAction(idAction);
        if (code != 0)
            throw actionDeletionRefused(session.service(), idAction, code);
        session.out().say(QStringLiteral("Deleted action %1.").arg(idAction));
    }
    QJsonObject row = fields::toJson(action);
    row.insert(QStringLiteral("keysDeleted"), bound.deleted);
    row.insert(QStringLiteral("keysLeft"), bound.left);
    return row;
}

ExitStatus remove(cli::Session &session, const cli::Arguments &arguments)
{
    const bool isDryRun = arguments.has("--dry-run");
    return deleteEach(session, arguments.ids("ACTION_ID"), fields::columns<Action>(),
                      [&](qlonglong id) { return removeOne(session, id, isDryRun); });
}

} // namespace

QList<cli::Command> actionCommands()
{
    using namespace cli::type;
    const cli::Parameter action =
        cli::argument("ACTION_ID", id("ACTION_ID"), "identifier of the action");
    const cli::Parameter assignments =
        cli::argument("FIELD=VALUE", text("FIELD=VALUE"), "a field and its value").repeatable();
    const cli::Parameter dryRun =
        cli::flag("--dry-run", "show which keys would be deleted, but delete nothing");
    return {cli::group("action", "list, add, change and delete actions"),
            cli::command("action list", "list actions", {}, list),
            cli::command("action show", "show an action", {action}, show),
            withFields<Action>(cli::command("action add", "add an action", {assignments}, add),
                               "progkeysctl action add type=1 action=call arguments=501 "
                               "label=Reception shortLabel=Rec"),
            withFields<Action>(cli::command("action set", "change fields of an action",
                                            {action, assignments}, set),
                               "progkeysctl action set 7 label=Reception"),
            cli::command("action delete", "delete actions and the keys that trigger them",
                         {action.repeatable(), dryRun}, remove)};
}

} // namespace commands
