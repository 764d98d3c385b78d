#pragma once

#include "output/Listing.h"
#include "records/Action.h"
#include "records/Key.h"

#include <optional>

namespace defaults {

/// The settings to plan for.
struct PlannedSettings
{
    QString actions;
    QString keys;
    std::optional<int> limit; ///< maximum number of keys of the set
};

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
    QList<QJsonObject> rows;

    /// Whether actions or keys change, apart from the ids of provisioned keys.
    bool hasChanges() const;
    bool hasRefusedRecords() const;
    /// The rows as a table, with a summary; without those that are kept, unless `hasAll`.
    output::Listing listing(bool hasAll) const;
};

/// What the service does to these rows if it starts with these settings: its own merge decides.
Plan planOf(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings);

} // namespace defaults
