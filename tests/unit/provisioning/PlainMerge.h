#pragma once

#include "provisioning/DefaultsMerge.h"

/// The merge in the plain way, which walks the whole list of provisioned actions for each stored
/// one. The service finds its matches faster, and must do and log the same.
namespace plain {

void mergeDefaults(provisioning::MergeTarget &target, const QString &actionsText,
                   const QString &keysText);

} // namespace plain
