#pragma once

#include "provisioning/DefaultsMerge.h"

/// The same merge done the plain way: the whole list of provisioned actions is walked for every
/// stored one. However the service finds its matches, it has to do and log the same.
namespace plain {

void mergeDefaults(provisioning::MergeTarget &target, const QString &actionsText,
                   const QString &keysText);

} // namespace plain
