#include "commands/ActionCommands.h"

#include "cli/Checks.h"
#include "commands/Refusals.h"
#include "commands/Shapes.h"
#include "commands/Words.h"
#include "fields/Fields.h"
#include "output/TextWidth.h"

#include <QJsonArray>

#include <memory>

namespace commands {
namespace {

ExitStatus list(cli::Session &session)
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

ExitStatus show(cli::Session &session, qlonglong idAction)
{
    session.out().record(fields::columns<Action>(),
                         fields::toJson(actionOf(session.service(), idAction)));
    return ExitStatus::Done;
}

void warnOfIdentifier(const Action &action)
{
    if (!action.dmId.isEmpty())
        output::warn(QStringLiteral("an action with a dmId counts as provisioned: it cannot be "
                                    "deleted, and a start of the service may overwrite it"));
}

ExitStatus add(cli::Session &session, const QStringList &assignments)
{
    session.out().requireFields(fields::columns<Action>());
    Action action;
    fields::assign(action, assignments);
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

ExitStatus set(cli::Session &session, qlonglong idAction, const QStringList &assignments)
{
    session.out().requireFields(fields::columns<Action>());
    Action action = actionOf(session.service(), idAction);
    fields::assign(action, assignments);
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

void addDelete(cli::CommandLine &line, CLI::App *group)
{
    struct Given
    {
        std::vector<qlonglong> ids;
        bool isDryRun = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = line.addCommand(
        group, "delete", "delete actions and the keys bound to them",
        [given](cli::Session &session) {
            const auto remove = [&](qlonglong id) {
                return removeOne(session, id, given->isDryRun);
            };
            return removeEach(session, given->ids, fields::columns<Action>(), remove);
        });
    command->add_option("IDS", given->ids, "their identifiers")
        ->required()
        ->type_name(cli::type::ActionId)
        ->transform(cli::wholeNumber());
    command->add_flag("--dry-run", given->isDryRun, "say which keys would go, and delete nothing");
}

} // namespace

void addActionCommands(cli::CommandLine &line)
{
    using namespace cli::type;
    CLI::App *group = line.addGroup("action", "list, add, change and delete actions");
    line.addCommand(group, "list", "list the actions", list);
    addIdCommand(line, group, {"show", "show one action", ActionId, nullptr}, show);
    addAssignmentsCommand(line, group, {"add", "add an action", nullptr, ActionAssignment}, add);
    addIdAndAssignmentsCommand(
        line, group, {"set", "change fields of an action", ActionId, ActionAssignment}, set);
    addDelete(line, group);
}

} // namespace commands
