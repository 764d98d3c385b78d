#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QSet>

#include <limits>
#include <optional>

namespace defaults {

/// The id of every new action in a plan: the id that it will get is not known.
constexpr qlonglong NewActionId = std::numeric_limits<qlonglong>::min();

/// What becomes of a provisioned key.
struct KeyOutcome
{
    std::optional<Key> key; ///< nothing if no action has its identifier
    bool isCreated = false; ///< false if the key limit is reached
};

/// The rows of a phone in memory, under the rules of the service, to try a merge on.
struct PlanTarget : provisioning::MergeTarget
{
    ListAction actions; ///< those of the phone, then new ones
    ListKey keys;
    std::optional<int> limit;

    QSet<qlonglong> withdrawn;     ///< that the merge tried to delete, which the service refuses
    QList<KeyOutcome> keyOutcomes; ///< of each accepted record of keys, in order

    bool isLogged() const override { return false; }
    ListAction allActions() override { return actions; }
    std::optional<Action> actionWithDmId(const QString &dmId) override;
    void addAction(const Action &action) override;
    void modifyAction(const Action &action) override;
    void deleteAction(qlonglong idAction) override { withdrawn.insert(idAction); }
    void deleteProvisionedKeys() override;
    void createKey(const Key &key) override;
};

} // namespace defaults
