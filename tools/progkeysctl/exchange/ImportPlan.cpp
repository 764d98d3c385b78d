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

// Keys of the set are placed in their container, those of an add-on module on the module.
auto placeOf(const Key &key)
{
    const bool isOnModule = key.type == KeyType::AddOnModule;
    return std::make_tuple(key.type, isOnModule ? QString() : key.container, key.position,
                           isOnModule ? key.aom_type : 0, isOnModule ? key.aom_addr : 0);
}

/// Takes the first row that fits out of the list.
template <typename Record, typename Predicate>
std::optional<Record> takeFirst(QList<Record> &rows, Predicate fits)
{
    const auto found = std::find_if(rows.begin(), rows.end(), fits);
    if (found == rows.end())
        return std::nullopt;
    const Record row = *found;
    rows.erase(found);
    return row;
}

QList<ActionStep> planActions(const Document &document, const ListAction &here)
{
    ListAction free;
    std::copy_if(here.begin(), here.end(), std::back_inserter(free), fields::isUsers);
    QList<ActionStep> steps;
    for (const Action &action : document.actions) {
        ActionStep step;
        step.action = action;
        const auto equal =
            takeFirst(free, [&](const Action &each) { return hasSameContent(each, action); });
        if (equal) {
            step.kind = StepKind::Skip;
            step.here = equal->idAction;
            step.reason = QStringLiteral("already there as action %1").arg(equal->idAction);
        }
        steps.append(step);
    }
    return steps;
}

/// Finds out which keys are there already and which have their place taken.
class KeyPlanner
{
public:
    KeyPlanner(const QList<ActionStep> &actions, const ListAction &actionsHere,
               const ListKey &keysHere);
    QList<KeyStep> plan(const QList<ExportedKey> &keys);

private:
    void resolveAction(KeyStep &step) const;
    void skipEqual(KeyStep &step);
    void settlePlace(KeyStep &step);

    const QList<ActionStep> &m_actions;
    const ListAction &m_actionsHere;
    ListKey m_users;
    ListKey m_provisioned;
};

KeyPlanner::KeyPlanner(const QList<ActionStep> &actions, const ListAction &actionsHere,
                       const ListKey &keysHere)
    : m_actions(actions), m_actionsHere(actionsHere)
{
    for (const Key &key : keysHere)
        (key.dmId.isEmpty() ? m_users : m_provisioned).append(key);
}

void skip(KeyStep &step, const QString &reason)
{
    step.kind = StepKind::Skip;
    step.reason = reason;
}

void KeyPlanner::resolveAction(KeyStep &step) const
{
    const QString &dmId = step.exported.actionDmId;
    if (!dmId.isEmpty()) {
        const auto here = std::find_if(m_actionsHere.begin(), m_actionsHere.end(),
                                       [&](const Action &each) { return each.dmId == dmId; });
        if (here == m_actionsHere.end())
            skip(step, QStringLiteral("no provisioned action \"%1\" here").arg(dmId));
        else
            step.idAction = here->idAction;
        return;
    }
    const qlonglong idAction = step.exported.key.idAction;
    if (idAction == ReservedActionId) {
        step.idAction = ReservedActionId;
        return;
    }
    const auto own = std::find_if(m_actions.begin(), m_actions.end(), [&](const ActionStep &each) {
        return each.action.idAction == idAction;
    });
    if (own == m_actions.end())
        skip(step, QStringLiteral("its action %1 is not in the file").arg(idAction));
    else if (own->kind == StepKind::Skip)
        step.idAction = own->here;
}

void KeyPlanner::skipEqual(KeyStep &step)
{
    if (step.kind == StepKind::Skip || !step.idAction)
        return;
    Key wanted = step.exported.key;
    wanted.idAction = *step.idAction;
    const auto equal =
        takeFirst(m_users, [&](const Key &each) { return hasSameContent(each, wanted); });
    if (!equal)
        return;
    step.here = equal->idKey;
    skip(step, QStringLiteral("already there as key %1").arg(equal->idKey));
}

void KeyPlanner::settlePlace(KeyStep &step)
{
    if (step.kind == StepKind::Skip)
        return;
    const auto isThere = [place = placeOf(step.exported.key)](const Key &each) {
        return placeOf(each) == place;
    };
    if (const auto taken = takeFirst(m_users, isThere)) {
        step.kind = StepKind::Change;
        step.here = taken->idKey;
        return;
    }
    const auto provisioned = std::find_if(m_provisioned.begin(), m_provisioned.end(), isThere);
    if (provisioned != m_provisioned.end())
        skip(step, QStringLiteral("provisioned key %1 has its place").arg(provisioned->idKey));
}

// Equal ones are found before places are given away: a key that is there already keeps its own.
QList<KeyStep> KeyPlanner::plan(const QList<ExportedKey> &keys)
{
    QList<KeyStep> steps;
    for (const ExportedKey &exported : keys) {
        KeyStep step;
        step.exported = exported;
        resolveAction(step);
        skipEqual(step);
        steps.append(step);
    }
    for (KeyStep &step : steps)
        settlePlace(step);
    return steps;
}

bool isOfSet(const Key &key)
{
    return key.type == KeyType::Set;
}

bool addsSetKey(const KeyStep &step)
{
    return step.kind == StepKind::Add && isOfSet(step.exported.key);
}

} // namespace

bool ImportPlan::addsSetKeys() const
{
    return std::any_of(keys.begin(), keys.end(), addsSetKey);
}

ImportPlan planImport(const Document &document, const ListAction &actions, const ListKey &keys)
{
    ImportPlan plan;
    plan.actions = planActions(document, actions);
    plan.keys = KeyPlanner(plan.actions, actions, keys).plan(document.keys);
    plan.setKeysAfterwards =
        static_cast<int>(std::count_if(keys.begin(), keys.end(), isOfSet) +
                         std::count_if(plan.keys.begin(), plan.keys.end(), addsSetKey));
    return plan;
}

} // namespace exchange
