#pragma once

#include "defaults/Kind.h"
#include "records/Action.h"
#include "records/Key.h"

#include <QJsonValue>

#include <optional>

namespace defaults {

/// What a phone is to be provisioned with.
struct PlannedSettings
{
    QString actions;
    QString keys;
    std::optional<int> limit; ///< most keys of the set; nothing: as many as there are
};

/// A field of a row, before and after. An action that is yet to be stored has no number: null.
struct FieldChange
{
    QString field;
    QJsonValue before;
    QJsonValue after;
};

struct ChangedAction
{
    Action action; ///< as it is now
    QList<FieldChange> changes;
};

/// A provisioned action that is provisioned no more: nobody deletes it.
struct LeftAction
{
    Action action;
    int removedKeys = 0; ///< provisioned keys that it has now
    int madeKeys = 0;    ///< provisioned keys that it has afterwards
    int userKeys = 0;
};

/// A key that is made. Compared with the provisioned key that it takes the place of, if there is
/// one; its number is a new one in any case.
struct MadeKey
{
    Key key; ///< idKey is -1; so is idAction if the action is new
    int record = 0;
    bool hasNewAction = false;
    std::optional<Key> predecessor;
    QList<FieldChange> changes; ///< from the predecessor
};

/// A provisioned key that is there now: all are removed.
struct RemovedKey
{
    Key key;
    std::optional<int> successor; ///< place in Plan::made; nothing if it does not come back
};

/// A key that is not made: it has no action, or the set is full.
struct DroppedKey
{
    Key key;
    int record = 0;
    std::optional<int> setKeys; ///< how many keys the set has then, if it is full
};

struct RefusedRecord
{
    Kind kind = Kind::Actions;
    int record = 0;
    QString fault;
    QString text;
};

/// What the synchronisation with a rollout does to the rows of a phone.
struct Plan
{
    ListAction added; ///< their idAction is -1, for not known yet
    QList<ChangedAction> changed;
    ListAction kept; ///< given the content that they have already
    QList<LeftAction> left;
    QList<MadeKey> made;
    QList<RemovedKey> removed;
    QList<DroppedKey> dropped;
    QList<RefusedRecord> refused;
    std::optional<int> limit;

    /// Whether the rows differ afterwards by more than the numbers of provisioned keys.
    bool hasChanges() const;
};

/// What the service would do on these rows if it started with these settings, found by its own
/// merge. The rows come in the order of their numbers, as the service lists them.
Plan planOf(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings);

} // namespace defaults
