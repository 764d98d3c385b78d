#include "commands/ActionCommands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/Counted.h"
#include "commands/DeleteEach.h"
#include "commands/Refusals.h"
#include "fields/Fields.h"
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
    listing.legend = counted(listing.rows.size(), "action");
    session.out().list(listing);
    return ExitStatus::Done;
}

ExitStatus show(cli::Session &session, const cli::Arguments &arguments)
{
    const Action action = actionOf(session.service(), arguments.id("ACTION_ID"));
    session.out().record(fields::columns<Action>(), fields::toJson(action));
    return ExitStatus::Done;
}

void warnOfIdentifier(const Action &action)
{
    if (!action.dmId.isEmpty())
        output::warn(QStringLiteral("an action with a dmId counts as provisioned: it cannot be "
                                    "deleted, and a start of the service may overwrite it"));
}

ExitStatus add(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Action>());
    Action action;
    fields::assign(action, arguments.texts("ACTION_FIELD=VALUE"));
    if (action.idAction != Action().idAction)
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("The service gives a new action its idAction"),
                      QStringLiteral("Leave it out.")};
    warnOfIdentifier(action);
    const qlonglong result = session.service().addAction(action);
    if (result < 0)
        throw additionRefused(result);
    action.idAction = result;
    session.out().done(QStringLiteral("Action %1 is added.").arg(result), fields::columns<Action>(),
                       fields::toJson(action));
    return ExitStatus::Done;
}

ExitStatus set(cli::Session &session, const cli::Arguments &arguments)
{
    const qlonglong idAction = arguments.id("ACTION_ID");
    session.out().requireFields(fields::columns<Action>());
    Action action = actionOf(session.service(), idAction);
    fields::assign(action, arguments.texts("ACTION_FIELD=VALUE"));
    if (action.idAction != idAction)
        throw Failure{ExitStatus::Usage, QStringLiteral("An action keeps its idAction"),
                      QStringLiteral("Add a new action and delete this one.")};
    warnOfIdentifier(action);
    const int code = session.service().modifyAction(action);
    if (code != 0)
        throw actionChangeRefused(session.service(), idAction, code);
    session.out().done(QStringLiteral("Action %1 is changed.").arg(idAction),
                       fields::columns<Action>(), fields::toJson(action));
    return ExitStatus::Done;
}

/// What becomes of the keys bound to an action when it is deleted.
struct BoundKeys
{
    QJsonArray gone;
    QJsonArray left; ///< provisioned: they stay, without an action
};

BoundKeys boundKeys(cli::Session &session, qlonglong idAction)
{
    BoundKeys bound;
    const ListKey keys = session.service().keys();
    for (const Key &key : keys)
        if (key.idAction == idAction)
            (key.dmId.isEmpty() ? bound.gone : bound.left).append(output::jsonNumber(key.idKey));
    return bound;
}

QString keysText(const QJsonArray &ids, const char *one, const char *several)
{
    return QStringLiteral("%1 %2 %3")
        .arg(ids.size() == 1 ? QStringLiteral("key") : QStringLiteral("keys"),
             output::displayText(ids), QString::fromLatin1(ids.size() == 1 ? one : several));
}

// Said first, so that who looks on knows what is about to go.
void announce(cli::Session &session, const Action &action, const BoundKeys &bound)
{
    QStringList parts;
    if (!bound.gone.isEmpty())
        parts.append(keysText(bound.gone, "goes with it", "go with it"));
    if (!bound.left.isEmpty())
        parts.append(keysText(bound.left, "is provisioned and stays, without an action",
                              "are provisioned and stay, without an action"));
    if (parts.isEmpty())
        parts.append(QStringLiteral("no key goes with it"));
    session.out().say(output::printable(QStringLiteral("Action %1 \"%2\": %3.")
                                            .arg(QString::number(action.idAction), action.label,
                                                 parts.join(QStringLiteral("; ")))));
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
        session.out().say(QStringLiteral("Action %1 is deleted.").arg(idAction));
    }
    QJsonObject row = fields::toJson(action);
    row.insert(QStringLiteral("keysDeleted"), bound.gone);
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
    const cli::Parameter id =
        cli::argument("ACTION_ID", cli::type::id("ACTION_ID"), "its identifier");
    const cli::Parameter assignments =
        cli::argument("ACTION_FIELD=VALUE", cli::type::text("ACTION_FIELD=VALUE"), "what is to be")
            .repeatable();
    const cli::Parameter dryRun =
        cli::flag("--dry-run", "say which keys would go, and delete nothing");
    return {cli::group("action", "list, add, change and delete actions"),
            cli::command("action list", "list the actions", {}, list),
            cli::command("action show", "show one action", {id}, show),
            cli::command("action add", "add an action", {assignments}, add),
            cli::command("action set", "change fields of an action", {id, assignments}, set),
            cli::command("action delete", "delete actions and the keys bound to them",
                         {id.repeatable(), dryRun}, remove)};
}

} // namespace commands
