#pragma once

#include "provisioning/ProvisioningText.h"
#include "records/Action.h"
#include "records/Key.h"

/// Conversion of the 7 fields of an accepted record. Numbers are decimal. A field that is not a
/// number becomes 0.
namespace provisioning {

/// The action in a record of "DefaultActions". Its idAction is -1.
Action toAction(const Record &record);

/// The key in a record of "DefaultKeys". Its idKey and idAction are -1. Its dmId also identifies
/// the provisioned action that it triggers.
Key toKey(const Record &record);

} // namespace provisioning
