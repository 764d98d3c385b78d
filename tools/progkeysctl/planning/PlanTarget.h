#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QHash>
#include <QSet>

#include <optional>

namespace defaults {

/// What becomes of a provisioned key.
struct KeyOutcome
{
    std::optional<Key> key; ///< nothing if no action has its identifier
    bool isCreated = false; ///< false if the key limit is reached
};

/// The rows of a phone in memory, under the rules of the service, to try a merge on.
class PlanTarget : public provisioning::MergeTarget
{
public:
    PlanTarget(ListAction actions, ListKey keys, std::optional<int> limit);

    bool isLogged() const override { return false; }
    ListAction allActions() override { return m_stored; }
    std::optional<Action> actionWithDmId(const QString &dmId) override;
    void addAction(const Action &action) override;
    void modifyAction(const Action &action) override;
    void deleteAction(qlonglong idAction) override { m_withdrawn.insert(idAction); }
    void deleteProvisionedKeys() override;
    void createKey(const Key &key) override;

    /// The actions that the phone had before, in the same order, as they are now.
    const ListAction &stored() const { return m_stored; }
    /// The new actions, with placeholders for the ids that are not known yet.
    const ListAction &added() const { return m_added; }
    bool isNew(qlonglong idAction) const { return !m_places.contains(idAction); }
    bool isModified(qlonglong idAction) const { return m_modified.contains(idAction); }
    /// Whether the merge tried to delete it. The service never deletes a provisioned action.
    bool isWithdrawn(qlonglong idAction) const { return m_withdrawn.contains(idAction); }
    /// Of each accepted record of keys, in order: the merge asks for its action first.
    const QList<KeyOutcome> &keyOutcomes() const { return m_keyOutcomes; }

private:
    ListAction m_stored;
    ListAction m_added;
    ListKey m_keys;
    std::optional<int> m_limit;
    QHash<qlonglong, int> m_places; ///< of the stored actions
    qlonglong m_nextId;
    QSet<qlonglong> m_modified;
    QSet<qlonglong> m_withdrawn;
    QList<KeyOutcome> m_keyOutcomes;
};

} // namespace defaults
