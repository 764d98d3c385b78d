#pragma once

#include "records/Action.h"
#include "records/Key.h"

namespace fields {

/// Whether both keys are at the place that only one key can occupy: the position in a container, or
/// a key of an add-on module.
bool isSamePlace(const Key &left, const Key &right);

/// A row in a few words: the place of a key, the label of an action.
QString described(const Key &key);
QString described(const Action &action);

} // namespace fields
