#pragma once

#include "planning/Plan.h"
#include "planning/PlanTarget.h"
#include "provisioning/ProvisioningText.h"

namespace defaults {

/// Tells of each accepted record of keys what became of it: made, or dropped and why.
void planKeys(Plan &plan, const QList<provisioning::Record> &records, const PlanTarget &target);

/// Finds for each provisioned key that is there now the one that comes in its place: the same one
/// if it can be, else one of the same identifier at the same place, else one of the same
/// identifier.
void pairKeys(Plan &plan, const ListKey &keysNow);

} // namespace defaults
