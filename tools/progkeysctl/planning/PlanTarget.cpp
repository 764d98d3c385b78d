#include "planning/PlanTarget.h"

#include <algorithm>

namespace defaults {

// New rows get the highest ids, so they come last. The merge asks once for each key.
std::optional<Action> PlanTarget::actionWithDmId(const QString &dmId)
{
    keyOutcomes.append(KeyOutcome());
    for (const ListAction &actions : {stored, added}) {
        for (const Action &action : actions) {
            if (action.dmId == dmId)
                return action;
        }
    }
    return std::nullopt;
}

void PlanTarget::addAction(const Action &action)
{
    added.append(action);
    added.last().idAction = NewActionId;
}

void PlanTarget::modifyAction(const Action &action)
{
    for (Action &each : stored) {
        if (each.idAction == action.idAction)
            each = action;
    }
}

void PlanTarget::deleteProvisionedKeys()
{
    const auto isProvisioned = [](const Key &key) { return !key.dmId.isEmpty(); };
    keys.erase(std::remove_if(keys.begin(), keys.end(), isProvisioned), keys.end());
}

void PlanTarget::createKey(const Key &key)
{
    const auto isOfSet = [](const Key &each) { return each.type == KeyType::Set; };
    const bool hasRoom =
        !limit || !isOfSet(key) || std::count_if(keys.cbegin(), keys.cend(), isOfSet) < *limit;
    keyOutcomes.last() = {key, hasRoom};
    if (hasRoom)
        keys.append(key);
}

} // namespace defaults
