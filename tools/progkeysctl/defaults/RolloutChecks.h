#pragma once

#include "defaults/Setting.h"

namespace defaults {

/// Checks of accepted records against each other. Each adds to the findings of its first argument.

/// Identifiers that an earlier action has already.
void checkIdentifiers(Setting &actions);

/// Keys in a place that an earlier key has already.
void checkPlaces(Setting &keys);

/// Keys whose identifier no record of these settings of actions has.
void checkActions(Setting &keys, const QList<const Setting *> &actions);

/// Keys of the set beyond the limit. Those without an action, found before, do not count: they are
/// dropped.
void checkLimit(Setting &keys, int limit);

/// A text of the setting `ProgKeysMax` that is no number, and so counts as 0.
void checkLimitText(Setting &limit);

} // namespace defaults
