#include "provisioning/DefaultsMerge.h"

#include "logging.h"
#include "provisioning/ProvisionedRecords.h"

#include <QHash>

namespace provisioning {
namespace {

constexpr qlonglong NotStored = -1;

template <typename... Values>
void debug(const MergeTarget &target, const char *line, const Values &...values)
{
    if (target.isLogged())
        logging::debug(line, values...);
}

template <typename... Values>
void warn(const MergeTarget &target, const char *line, const Values &...values)
{
    if (target.isLogged())
        logging::warning(line, values...);
}

ListAction readActions(const MergeTarget &target, const QList<Record> &records)
{
    ListAction actions;
    for (const Record &record : records) {
        if (!record.isAccepted()) {
            warn(target, "Skipping invalid dm action: %1", record.hidden);
            continue;
        }
        actions.append(toAction(record));
        debug(target, "added action of dmId %1", actions.last().dmId);
    }
    return actions;
}

ListKey readKeys(const MergeTarget &target, const QList<Record> &records)
{
    ListKey keys;
    for (const Record &record : records) {
        if (record.isAccepted())
            keys.append(toKey(record));
        else
            warn(target, "Skipping invalid dm key: %1", record.hidden);
    }
    return keys;
}

// The indexes of the actions by identifier, in order. Identifiers may be repeated.
QHash<QString, QList<int>> placesByDmId(const ListAction &actions)
{
    QHash<QString, QList<int>> places;
    for (int place = 0; place < actions.size(); ++place)
        places[actions.at(place).dmId].append(place);
    return places;
}

// Updates each stored action with each provisioned action of the same dmId, in order. Sets the
// idAction of the provisioned actions that match.
void updateStoredActions(MergeTarget &target, ListAction &provisioned)
{
    const QHash<QString, QList<int>> places = placesByDmId(provisioned);
    const ListAction stored = target.allActions();
    debug(target, "found %1 db actions", stored.size());
    for (const Action &action : stored) {
        const QList<int> matches = places.value(action.dmId);
        for (const int place : matches) {
            debug(target, "action of id %1 found, modifying", action.dmId);
            provisioned[place].idAction = action.idAction;
            target.modifyAction(provisioned.at(place));
        }
        if (matches.isEmpty() && !action.dmId.isEmpty()) {
            debug(target, "action of id %1 not found, deleting", action.dmId);
            target.deleteAction(action.idAction);
        }
    }
}

void addNewActions(MergeTarget &target, const ListAction &provisioned)
{
    for (const Action &action : provisioned) {
        if (action.idAction != NotStored)
            continue;
        target.addAction(action);
        debug(target, "action of id %1 added", action.dmId);
    }
}

void replaceProvisionedKeys(MergeTarget &target, ListKey keys)
{
    target.deleteProvisionedKeys();
    for (Key &key : keys) {
        const std::optional<Action> action = target.actionWithDmId(key.dmId);
        if (!action)
            continue;
        key.idAction = action->idAction;
        target.createKey(key);
    }
}

} // namespace

void mergeDefaults(MergeTarget &target, const QString &actionsText, const QString &keysText)
{
    const QList<Record> actionRecords = parseText(actionsText);
    const QList<Record> keyRecords = parseText(keysText);
    debug(target, "Processing %1 dm actions and %2 dm keys", actionRecords.size(),
          keyRecords.size());

    ListAction provisioned = readActions(target, actionRecords);
    updateStoredActions(target, provisioned);
    addNewActions(target, provisioned);
    replaceProvisionedKeys(target, readKeys(target, keyRecords));
}

} // namespace provisioning
