#pragma once

#include "defaults/Setting.h"

namespace defaults {

/// Each of these checks adds problems to its first argument, which must be readable.

/// Single records of actions or keys.
void checkRecords(Setting &setting);

/// Identifiers that an earlier action has, or that differ from one only in case or blanks.
void checkIdentifiers(Setting &actions);

/// Keys at the same place as an earlier key. Those with an invalid number have no place.
void checkPlaces(Setting &keys);

/// Keys whose identifier no action has. Those of a refused action are not reported: the action is.
void checkActionsOf(Setting &keys, const Setting &actions);

/// Keys of the set beyond the limit. Keys without an action, found before, do not count: the phone
/// drops them.
void checkLimit(Setting &keys, int limit);

/// A limit that is not a number.
void checkLimitText(Setting &limit);

} // namespace defaults
