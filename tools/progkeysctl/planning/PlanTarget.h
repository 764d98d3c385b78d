#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QHash>
#include <QSet>

#include <optional>

namespace defaults {

/// The rows of a phone in memory, under the rules of the service, to try a merge on. Records what
/// the merge asked for.
class PlanTarget : public provisioning::MergeTarget
{
public:
    /// A key that the merge asked to create.
    struct KeyRequest
    {
        Key key;
        bool isCreated = false; ///< false if the key limit is reached
    };

    PlanTarget(ListAction actions, ListKey keys, std::optional<int> limit);

    bool isLogged() const override { return false; }
    ListAction allActions() override { return m_stored; }
    std::optional<Action> actionWithDmId(const QString &dmId) override;
    void addAction(const Action &action) override;
    void modifyAction(const Action &action) override;
    void deleteAction(qlonglong idAction) override;
    void deleteProvisionedKeys() override;
    void createKey(const Key &key) override;

    /// The actions that the phone had before, in the same order, as they are now.
    const ListAction &stored() const { return m_stored; }
    /// The new actions, with placeholders for the ids that are not known yet.
    const ListAction &added() const { return m_added; }
    bool isNew(qlonglong idAction) const { return !m_places.contains(idAction); }
    bool wasModified(qlonglong idAction) const { return m_modified.contains(idAction); }
    bool wasToBeDeleted(qlonglong idAction) const { return m_toBeDeleted.contains(idAction); }
    const QList<KeyRequest> &keyRequests() const { return m_keyRequests; }

private:
    bool hasRoomFor(const Key &key) const;

    ListAction m_stored;
    ListAction m_added;
    ListKey m_keys;
    std::optional<int> m_limit;
    QHash<qlonglong, int> m_places; ///< of the stored actions
    qlonglong m_nextId;
    QSet<qlonglong> m_modified;
    QSet<qlonglong> m_toBeDeleted;
    QList<KeyRequest> m_keyRequests;
};

} // namespace defaults
