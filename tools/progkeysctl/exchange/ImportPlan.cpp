#include "exchange/ImportPlan.h"

#include "fields/Fields.h"
#include "fields/Places.h"
#include "text/Format.h"

#include <QHash>

#include <algorithm>

namespace exchange {
namespace {

bool hasSameContent(Action left, const Action &right)
{
    left.idAction = right.idAction;
    return left == right;
}

bool hasSameContent(Key left, const Key &right)
{
    left.idKey = right.idKey;
    return left == right;
}

// Removes the first row that fits from the list and returns it.
template <typename Row, typename Predicate>
std::optional<Row> takeFirst(QList<Row> &rows, Predicate fits)
{
    const auto found = std::find_if(rows.begin(), rows.end(), fits);
    if (found == rows.end())
        return std::nullopt;
    const Row row = *found;
    rows.erase(found);
    return row;
}

void skip(Step &step, const QString &reason)
{
    step.kind = StepKind::Skip;
    step.reason = reason;
}

// The ids here of the actions of a document that are here, by their ids there.
using ActionIds = QHash<qlonglong, qlonglong>;

// Skips an action that a user's action here is equal to, and takes that one off the list.
Step planAction(const Action &action, ListAction &userActions, ActionIds &ids)
{
    Step step;
    step.action = action;
    const auto equal =
        takeFirst(userActions, [&](const Action &each) { return hasSameContent(each, action); });
    if (equal) {
        step.here = equal->idAction;
        ids.insert(action.idAction, equal->idAction);
        skip(step, format("already exists as action %1", equal->idAction));
    }
    return step;
}

void findProvisionedAction(Step &step, const QString &dmId, const ListAction &actions)
{
    const auto here = std::find_if(actions.begin(), actions.end(),
                                   [&](const Action &each) { return each.dmId == dmId; });
    if (here == actions.end())
        skip(step, format("there is no provisioned action \"%1\"", dmId));
    else
        step.target = here->idAction;
}

void findEqualKey(Step &step, ListKey &userKeys)
{
    if (step.kind == StepKind::Skip || !step.target)
        return;
    Key wanted = step.key;
    wanted.idAction = *step.target;
    const auto equal =
        takeFirst(userKeys, [&](const Key &each) { return hasSameContent(each, wanted); });
    if (!equal)
        return;
    step.here = equal->idKey;
    skip(step, format("already exists as key %1", equal->idKey));
}

void findPlace(Step &step, ListKey &userKeys, const ListKey &provisionedKeys)
{
    if (step.kind == StepKind::Skip)
        return;
    const auto isThere = [&](const Key &each) { return fields::isSamePlace(each, step.key); };
    if (const auto occupant = takeFirst(userKeys, isThere)) {
        step.kind = StepKind::Change;
        step.here = occupant->idKey;
        return;
    }
    const auto provisioned = std::find_if(provisionedKeys.begin(), provisionedKeys.end(), isThere);
    if (provisioned != provisionedKeys.end())
        skip(step, format("provisioned key %1 occupies the place", provisioned->idKey));
}

} // namespace

bool Step::addsKeyOfSet() const
{
    return !action && kind == StepKind::Add && key.type == KeyType::Set;
}

// All equal keys are found before places are given away, so that they keep theirs.
QList<Step> planImport(const Document &document, const ListAction &actions, const ListKey &keys)
{
    ListAction userActions;
    std::copy_if(actions.begin(), actions.end(), std::back_inserter(userActions), fields::isUsers);
    ListKey userKeys;
    ListKey provisionedKeys;
    for (const Key &key : keys)
        (key.dmId.isEmpty() ? userKeys : provisionedKeys).append(key);

    ActionIds ids{{ReservedActionId, ReservedActionId}};
    QList<Step> actionSteps;
    for (const Action &action : document.actions)
        actionSteps.append(planAction(action, userActions, ids));
    QList<Step> keySteps;
    for (const ExportedKey &exported : document.keys) {
        Step step;
        step.key = exported.key;
        if (!exported.actionDmId.isEmpty())
            findProvisionedAction(step, exported.actionDmId, actions);
        else if (ids.contains(exported.key.idAction))
            step.target = ids.value(exported.key.idAction);
        findEqualKey(step, userKeys);
        keySteps.append(step);
    }
    for (Step &step : keySteps)
        findPlace(step, userKeys, provisionedKeys);
    return actionSteps + keySteps;
}

} // namespace exchange
