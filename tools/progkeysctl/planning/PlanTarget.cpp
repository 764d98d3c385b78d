#include "planning/PlanTarget.h"

#include <algorithm>
#include <limits>

namespace defaults {

PlanTarget::PlanTarget(ListAction actions, ListKey keys, std::optional<int> limit)
    : m_stored(std::move(actions)), m_keys(std::move(keys)), m_limit(limit),
      m_nextId(std::numeric_limits<qlonglong>::min())
{
    for (int place = 0; place < m_stored.size(); ++place)
        m_places.insert(m_stored.at(place).idAction, place);
}

// New rows get the highest ids, so they come last.
std::optional<Action> PlanTarget::actionWithDmId(const QString &dmId)
{
    m_keyOutcomes.append(KeyOutcome());
    for (const ListAction &actions : {m_stored, m_added}) {
        for (const Action &action : actions) {
            if (action.dmId == dmId)
                return action;
        }
    }
    return std::nullopt;
}

void PlanTarget::addAction(const Action &action)
{
    while (m_places.contains(m_nextId))
        ++m_nextId;
    m_added.append(action);
    m_added.last().idAction = m_nextId++;
}

void PlanTarget::modifyAction(const Action &action)
{
    m_stored[m_places.value(action.idAction)] = action;
    m_modified.insert(action.idAction);
}

void PlanTarget::deleteProvisionedKeys()
{
    const auto isProvisioned = [](const Key &key) { return !key.dmId.isEmpty(); };
    m_keys.erase(std::remove_if(m_keys.begin(), m_keys.end(), isProvisioned), m_keys.end());
}

void PlanTarget::createKey(const Key &key)
{
    const auto isOfSet = [](const Key &each) { return each.type == KeyType::Set; };
    const bool hasRoom = !m_limit || !isOfSet(key) ||
                         std::count_if(m_keys.cbegin(), m_keys.cend(), isOfSet) < *m_limit;
    m_keyOutcomes.last() = {key, hasRoom};
    if (hasRoom)
        m_keys.append(key);
}

} // namespace defaults
