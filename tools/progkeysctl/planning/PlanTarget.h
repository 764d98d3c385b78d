#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QHash>
#include <QSet>

#include <optional>

namespace defaults {

/// The rows of a phone in memory, under the service's own rules, for a merge to be tried on. It
/// notes what it was asked.
class PlanTarget : public provisioning::MergeTarget
{
public:
    /// A key that was asked for.
    struct KeyRequest
    {
        Key key;
        bool isMade = false;
        int setKeys = 0; ///< keys of the set at that moment
    };

    PlanTarget(ListAction actions, ListKey keys, std::optional<int> limit);

    ListAction allActions() override { return m_stored; }
    std::optional<Action> actionWithDmId(const QString &dmId) override;
    void addAction(const Action &action) override;
    void modifyAction(const Action &action) override;
    void deleteAction(qlonglong idAction) override;
    void deleteProvisionedKeys() override;
    void createKey(const Key &key) override;

    /// The actions that were there from the beginning, in their order, as they are now.
    const ListAction &stored() const { return m_stored; }
    /// Those that came, under numbers that stand for ones not known yet.
    const ListAction &added() const { return m_added; }
    bool isNew(qlonglong idAction) const { return !m_places.contains(idAction); }
    bool wasModified(qlonglong idAction) const { return m_modified.contains(idAction); }
    bool wasToBeDeleted(qlonglong idAction) const { return m_toBeDeleted.contains(idAction); }
    const QList<KeyRequest> &keyRequests() const { return m_keyRequests; }

private:
    int countSetKeys() const;

    ListAction m_stored;
    ListAction m_added;
    ListKey m_keys;
    std::optional<int> m_limit;
    QHash<qlonglong, int> m_places; ///< of stored actions
    qlonglong m_nextId;
    QSet<qlonglong> m_modified;
    QSet<qlonglong> m_toBeDeleted;
    QList<KeyRequest> m_keyRequests;
};

} // namespace defaults
