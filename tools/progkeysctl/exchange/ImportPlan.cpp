#include "exchange/ImportPlan.h"

#include "fields/Fields.h"

#include <algorithm>
#include <tuple>

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

// A key of the set is in a container, a key of an add-on module on that module.
auto placeOf(const Key &key)
{
    const bool isOnModule = key.type == KeyType::AddOnModule;
    return std::make_tuple(key.type, isOnModule ? QString() : key.container, key.position,
                           isOnModule ? key.aom_type : 0, isOnModule ? key.aom_addr : 0);
}

bool isOfSet(const Key &key)
{
    return key.type == KeyType::Set;
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

class Planner
{
public:
    Planner(const ListAction &actions, const ListKey &keys) : m_actions(actions)
    {
        std::copy_if(actions.begin(), actions.end(), std::back_inserter(m_userActions),
                     fields::isUsers);
        for (const Key &key : keys)
            (key.dmId.isEmpty() ? m_userKeys : m_provisionedKeys).append(key);
    }

    QList<Step> plan(const Document &document);

private:
    Step planAction(const Action &action);
    void findAction(Step &step, const QList<Step> &actions) const;
    void findEqualKey(Step &step);
    void findPlace(Step &step);

    const ListAction &m_actions;
    ListAction m_userActions; ///< that no action of the document is equal to yet
    ListKey m_userKeys;       ///< likewise
    ListKey m_provisionedKeys;
};

void skip(Step &step, const QString &reason)
{
    step.kind = StepKind::Skip;
    step.reason = reason;
}

Step Planner::planAction(const Action &action)
{
    Step step;
    step.action = action;
    const auto equal =
        takeFirst(m_userActions, [&](const Action &each) { return hasSameContent(each, action); });
    if (equal) {
        step.here = equal->idAction;
        skip(step, QStringLiteral("equal to action %1").arg(equal->idAction));
    }
    return step;
}

void Planner::findAction(Step &step, const QList<Step> &actions) const
{
    const QString &dmId = step.exported.actionDmId;
    const qlonglong idAction = step.exported.key.idAction;
    if (!dmId.isEmpty()) {
        const auto here = std::find_if(m_actions.begin(), m_actions.end(),
                                       [&](const Action &each) { return each.dmId == dmId; });
        if (here == m_actions.end())
            skip(step, QStringLiteral("no provisioned action \"%1\" here").arg(dmId));
        else
            step.target = here->idAction;
        return;
    }
    if (idAction == ReservedActionId)
        step.target = ReservedActionId;
    for (const Step &each : actions) {
        if (each.kind == StepKind::Skip && each.action->idAction == idAction)
            step.target = each.here;
    }
}

void Planner::findEqualKey(Step &step)
{
    if (step.kind == StepKind::Skip || !step.target)
        return;
    Key wanted = step.exported.key;
    wanted.idAction = *step.target;
    const auto equal =
        takeFirst(m_userKeys, [&](const Key &each) { return hasSameContent(each, wanted); });
    if (!equal)
        return;
    step.here = equal->idKey;
    skip(step, QStringLiteral("equal to key %1").arg(equal->idKey));
}

void Planner::findPlace(Step &step)
{
    if (step.kind == StepKind::Skip)
        return;
    const auto isThere = [place = placeOf(step.exported.key)](const Key &each) {
        return placeOf(each) == place;
    };
    if (const auto occupant = takeFirst(m_userKeys, isThere)) {
        step.kind = StepKind::Change;
        step.here = occupant->idKey;
        return;
    }
    const auto provisioned =
        std::find_if(m_provisionedKeys.begin(), m_provisionedKeys.end(), isThere);
    if (provisioned != m_provisionedKeys.end())
        skip(step, QStringLiteral("place of provisioned key %1").arg(provisioned->idKey));
}

// All equal keys are found before places are given away, so that they keep theirs.
QList<Step> Planner::plan(const Document &document)
{
    QList<Step> actions;
    for (const Action &action : document.actions)
        actions.append(planAction(action));
    QList<Step> keys;
    for (const ExportedKey &exported : document.keys) {
        Step step;
        step.exported = exported;
        findAction(step, actions);
        findEqualKey(step);
        keys.append(step);
    }
    for (Step &step : keys)
        findPlace(step);
    return actions + keys;
}

} // namespace

ImportPlan planImport(const Document &document, const ListAction &actions, const ListKey &keys)
{
    ImportPlan plan;
    plan.steps = Planner(actions, keys).plan(document);
    const auto addsSetKey = [](const Step &step) {
        return !step.action && step.kind == StepKind::Add && isOfSet(step.exported.key);
    };
    plan.addedSetKeys =
        static_cast<int>(std::count_if(plan.steps.begin(), plan.steps.end(), addsSetKey));
    plan.setKeysAfterwards =
        plan.addedSetKeys + static_cast<int>(std::count_if(keys.begin(), keys.end(), isOfSet));
    return plan;
}

} // namespace exchange
