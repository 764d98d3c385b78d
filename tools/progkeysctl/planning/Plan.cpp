#include "planning/Plan.h"

#include "planning/PlanFields.h"
#include "planning/PlanKeys.h"
#include "planning/PlanTarget.h"

#include <zelcore/ZELLogger.h>

#include <algorithm>

namespace defaults {
namespace {

constexpr int NoLevel = 0;

// What the merge logs is the service's to tell: the plan says the same in its own way.
void mergeQuietly(PlanTarget &target, const PlannedSettings &settings)
{
    const int level = ZELLogger::getConfiguredLevel();
    ZELLogger::setConfiguredLevel(NoLevel);
    provisioning::mergeDefaults(target, settings.actions, settings.keys);
    ZELLogger::setConfiguredLevel(level);
}

// An empty text is one empty record to the parser, and no mistake to people.
QList<provisioning::Record> recordsOf(const QString &text)
{
    return text.isEmpty() ? QList<provisioning::Record>() : provisioning::parseText(text);
}

void noteRefused(Plan &plan, Kind kind, const QString &text)
{
    const QList<provisioning::Record> records = recordsOf(text);
    for (const provisioning::Record &record : records) {
        if (!record.isAccepted())
            plan.refused.append(
                {kind, record.number, record.fault, text.mid(record.start, record.length)});
    }
}

void planActions(Plan &plan, const ListAction &before, const PlanTarget &target)
{
    for (int place = 0; place < before.size(); ++place) {
        const Action &action = before.at(place);
        const QList<FieldChange> changes = changesBetween(action, target.stored().at(place));
        if (!changes.isEmpty())
            plan.changed.append({action, changes});
        else if (target.wasModified(action.idAction))
            plan.kept.append(action);
        else if (target.wasToBeDeleted(action.idAction))
            plan.left.append({action, 0, 0, 0});
    }
    plan.added = target.added();
    for (Action &action : plan.added)
        action.idAction = Action().idAction;
}

void countKeys(Plan &plan, const ListKey &keysNow)
{
    for (LeftAction &left : plan.left) {
        for (const Key &key : keysNow) {
            if (key.idAction == left.action.idAction)
                ++(key.dmId.isEmpty() ? left.userKeys : left.removedKeys);
        }
        for (const MadeKey &made : std::as_const(plan.made)) {
            if (!made.hasNewAction && made.key.idAction == left.action.idAction)
                ++left.madeKeys;
        }
    }
}

} // namespace

bool Plan::hasChanges() const
{
    const auto isOther = [](const MadeKey &key) {
        return !key.predecessor || !key.changes.isEmpty();
    };
    const auto isGone = [](const RemovedKey &key) { return !key.successor; };
    return !added.isEmpty() || !changed.isEmpty() ||
           std::any_of(made.cbegin(), made.cend(), isOther) ||
           std::any_of(removed.cbegin(), removed.cend(), isGone);
}

Plan planOf(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings)
{
    PlanTarget target(actions, keys, settings.limit);
    mergeQuietly(target, settings);
    Plan plan;
    plan.limit = settings.limit;
    planActions(plan, actions, target);
    planKeys(plan, recordsOf(settings.keys), target);
    pairKeys(plan, keys);
    countKeys(plan, keys);
    noteRefused(plan, Kind::Actions, settings.actions);
    noteRefused(plan, Kind::Keys, settings.keys);
    return plan;
}

} // namespace defaults
