#include "planning/PlanTarget.h"

#include <algorithm>

namespace defaults {

// The merge asks once for each key.
std::optional<Action> PlanTarget::actionWithDmId(const QString &dmId)
{
    keyOutcomes.append(KeyOutcome());
    const auto found = std::find_if(actions.cbegin(), actions.cend(),
                                    [&](const Action &action) { return action.dmId == dmId; });
    return found == actions.cend() ? std::nullopt : std::optional(*found);
}

void PlanTarget::addAction(const Action &action)
{
    actions.append(action);
    actions.last().idAction = NewActionId;
}

void PlanTarget::modifyAction(const Action &action)
{
    for (Action &each : actions) {
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
