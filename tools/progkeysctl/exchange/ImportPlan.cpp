#include "exchange/Import.h"

#include "fields/Fields.h"
#include "fields/Places.h"
#include "text/Format.h"

#include <QHash>

#include <algorithm>

namespace exchange {
namespace {

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
    step.outcome = "skipped"_s;
    step.reason = reason;
}

// The ids here of the actions of a document that are here, by their ids there.
using ActionIds = QHash<qlonglong, qlonglong>;

// Skips an action that a user's action here is equal to, and takes that one off the list.
Step planAction(const Action &action, ListAction &actions, ActionIds &ids)
{
    Step step;
    step.action = action;
    const auto equal = takeFirst(actions, [&](Action each) {
        const bool isUsers = fields::isUsers(each);
        each.idAction = action.idAction;
        return isUsers && each == action;
    });
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

// Skips a key that a user's key here is equal to, and takes that one off the list.
void findEqualKey(Step &step, ListKey &keys)
{
    Key wanted = step.key;
    wanted.idAction = *step.target;
    const auto equal = takeFirst(keys, [&](Key each) {
        each.idKey = wanted.idKey;
        return each == wanted;
    });
    if (!equal)
        return;
    step.here = equal->idKey;
    skip(step, format("already exists as key %1", equal->idKey));
}

void findPlace(Step &step, ListKey &keys)
{
    const auto isThere = [&](const Key &each) { return fields::isSamePlace(each, step.key); };
    const auto occupant =
        takeFirst(keys, [&](const Key &each) { return each.dmId.isEmpty() && isThere(each); });
    const auto provisioned = std::find_if(keys.cbegin(), keys.cend(), isThere);
    if (occupant) {
        step.kind = StepKind::Change;
        step.here = occupant->idKey;
    } else if (provisioned != keys.cend()) {
        skip(step, format("provisioned key %1 occupies the place", provisioned->idKey));
    }
}

} // namespace

// All equal keys are found before places are given away, so that they keep theirs.
QList<Step> planImport(const Document &document, ListAction actions, ListKey keys)
{
    ActionIds ids{{ReservedActionId, ReservedActionId}};
    QList<Step> steps;
    for (const Action &action : document.actions)
        steps.append(planAction(action, actions, ids));
    for (const ExportedKey &exported : document.keys) {
        Step step;
        step.key = exported.key;
        if (!exported.actionDmId.isEmpty())
            findProvisionedAction(step, exported.actionDmId, actions);
        else if (ids.contains(exported.key.idAction))
            step.target = ids.value(exported.key.idAction);
        if (step.target)
            findEqualKey(step, keys);
        steps.append(step);
    }
    for (Step &step : steps) {
        if (!step.action && step.kind != StepKind::Skip)
            findPlace(step, keys);
    }
    return steps;
}

} // namespace exchange
