#pragma once

#include "provisioning/ProvisioningText.h"
#include "records/Action.h"
#include "records/Key.h"

/// What the 7 fields of an accepted record mean. Numbers are decimal; a field
/// that is not a number becomes 0.
namespace provisioning {

/// The action that a record of "DefaultActions" describes; its idAction is -1, not stored.
Action toAction(const Record &record);

/// The key that a record of "DefaultKeys" describes; idKey and idAction are -1. Its dmId also
/// names the provisioned action that it triggers.
Key toKey(const Record &record);

} // namespace provisioning
