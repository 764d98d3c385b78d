#pragma once

#include "defaults/Rollout.h"
#include "output/Listing.h"
#include "records/Action.h"
#include "records/Key.h"

namespace defaults {

/// What a start of the service with other settings changes on a phone. Each row is about an action,
/// a key or a record, and has these fields:
///
/// - `what`: added, changed (one row for each field), kept or removed; withdrawn for an action that
///   is no longer provisioned but stays; dropped for a key that is not created; refused for a
///   record with the wrong number of fields
/// - `kind`: action or key; `id`, `dmId`: which one; `record`: the number of its record
/// - `field`, `old`, `new`: what changes; without a field `old` and `new` describe the whole row
/// - `reason`: why it is withdrawn, dropped or refused, or what is unusual about it
/// - `detail`: the fields above in one text, for people
///
/// In JSON a row that is added has its fields as `content`.
struct Plan
{
    output::Listing listing;
    bool hasChanges = false; ///< of actions or keys, apart from the ids of provisioned keys
    bool hasRefusedRecords = false;
};

/// What the service does to these rows if it starts with these settings: its own merge decides. The
/// rollout has actions and keys.
Plan planOf(const ListAction &actions, const ListKey &keys, const Rollout &rollout);

} // namespace defaults
