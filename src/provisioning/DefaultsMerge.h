#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <QList>
#include <QString>

#include <optional>

namespace provisioning {

/// What a merge reads and changes. In the service these are its operations, so that their checks,
/// events and log lines apply to provisioned rows too; their results are not used.
class MergeTarget
{
public:
    MergeTarget() = default;
    MergeTarget(const MergeTarget &) = delete;
    MergeTarget &operator=(const MergeTarget &) = delete;
    virtual ~MergeTarget() = default;

    /// Whether the merge writes its log lines. False for a dry run.
    virtual bool isLogged() const { return true; }

    virtual ListAction allActions() = 0;
    virtual std::optional<Action> actionWithDmId(const QString &dmId) = 0; ///< the first one
    virtual void addAction(const Action &action) = 0;
    virtual void modifyAction(const Action &action) = 0;
    virtual void deleteAction(qlonglong idAction) = 0;
    virtual void deleteProvisionedKeys() = 0;
    virtual void createKey(const Key &key) = 0;
};

/// Brings the target into line with the texts of the settings "DefaultActions" and "DefaultKeys".
///
/// Provisioned actions are matched by dmId and keep their idAction. New ones are added. The target
/// is asked to delete those that are no longer provisioned; the service refuses that, so they stay.
/// All provisioned keys are deleted and created again, each with the first action of its dmId; a
/// key without an action is dropped. User rows do not change. An invalid record is logged and
/// skipped.
void mergeDefaults(MergeTarget &target, const QString &actionsText, const QString &keysText);

} // namespace provisioning
