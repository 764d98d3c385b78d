#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <QList>
#include <QString>

#include <optional>

namespace provisioning {

/// The operations that a merge uses. In the service these are its own operations, so that their
/// checks, events and log lines also apply to provisioned rows. Their results are not used.
class MergeTarget
{
public:
    MergeTarget() = default;
    MergeTarget(const MergeTarget &) = delete;
    MergeTarget &operator=(const MergeTarget &) = delete;
    virtual ~MergeTarget() = default;

    /// Whether the merge writes log lines. False for a dry run.
    virtual bool isLogged() const { return true; }

    virtual ListAction allActions() = 0;
    virtual std::optional<Action> actionWithDmId(const QString &dmId) = 0; ///< the first one
    virtual void addAction(const Action &action) = 0;
    virtual void modifyAction(const Action &action) = 0;
    virtual void deleteAction(qlonglong idAction) = 0;
    virtual void deleteProvisionedKeys() = 0;
    virtual void createKey(const Key &key) = 0;
};

/// Merges the texts of the settings "DefaultActions" and "DefaultKeys" into the target.
///
/// Provisioned actions are matched by dmId and keep their idAction. New actions are added. The
/// merge requests the deletion of actions that are no longer provisioned, but the service refuses
/// this, so they stay. All provisioned keys are deleted and created again, each with the first
/// action of its dmId. A key without an action is dropped. User rows do not change. Invalid records
/// are logged and skipped.
void mergeDefaults(MergeTarget &target, const QString &actionsText, const QString &keysText);

} // namespace provisioning
