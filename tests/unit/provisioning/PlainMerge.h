#pragma once

#include "provisioning/DefaultsMerge.h"

/// A simple merge, which searches all provisioned actions for each stored one. The merge of the
/// service is faster, and must make the same calls and write the same log lines.
namespace plain {

void mergeDefaults(provisioning::MergeTarget &target, const QString &actionsText,
                   const QString &keysText);

} // namespace plain
