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

    /// Whether the merge writes its own log lines. Not for a merge that only tries something out.
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
/// Provisioned actions are matched by dmId and keep their idAction; new ones are added; the target
/// is asked to delete those that are provisioned no more. Provisioned keys are all removed and made
/// anew, each with the first action of its dmId; one without an action is dropped. Rows of users
/// are not touched. A record that is refused is logged and passed over.
void mergeDefaults(MergeTarget &target, const QString &actionsText, const QString &keysText);

} // namespace provisioning
