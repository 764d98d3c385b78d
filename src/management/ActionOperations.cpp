#include "app/ZelProgrammableKeys.h"
#include "events/Notifications.h"
#include "logging.h"
#include "storage/ProgKeysDatabase.h"

namespace {

constexpr int LabelShown = 1;

} // namespace

ListAction ZelProgrammableKeys::getAllActions()
{
    return ProgKeysDatabase::instance().allActions();
}

ListAction ZelProgrammableKeys::getAction(qlonglong idAction)
{
    return ProgKeysDatabase::instance().action(idAction);
}

qlonglong ZelProgrammableKeys::addAction(Action action)
{
    const Insertion insertion = ProgKeysDatabase::instance().insertAction(action);
    action.idAction = insertion.id;
    if (insertion.code != StorageCode::Success)
        return insertion.code;
    ZELEvent event;
    events::actionCreated(event, action);
    return action.idAction;
}

int ZelProgrammableKeys::modifyAction(const Action &action)
{
    const ListAction stored = getAction(action.idAction);
    if (stored.isEmpty()) {
        logging::error("ZelProgrammableKeys::modifyAction(2) : fail !");
        return ResultCode::Refused;
    }
    const Action &old = stored.first();
    const int code = ProgKeysDatabase::instance().updateAction(action);
    if (code != StorageCode::Success) {
        logging::error("ZelProgrammableKeys::modifyAction(1) : fail !");
        return code;
    }
    ZELEvent event;
    events::actionModified(event, action);
    if (old.shortLabel != action.shortLabel)
        updateAomLabelsForAction(action.idAction, action.shortLabel);
    return ResultCode::Success;
}

void ZelProgrammableKeys::updateAomLabelsForAction(qlonglong idAction, const QString &label)
{
    const ListKey keys =
        ProgKeysDatabase::instance().keysOfTypeWithAction(KeyType::AddOnModule, idAction);
    for (const Key &key : keys) {
        ZELEvent event;
        events::setModuleLabel(event, events::placeOf(key), LabelShown, label);
    }
}

int ZelProgrammableKeys::deleteAction(qlonglong idAction)
{
    if (idAction == ReservedActionId) {
        logging::error("Action of id -1 is read only and reserved. Deletion is forbidden.");
        return ResultCode::Refused;
    }
    const ListAction stored = getAction(idAction);
    if (stored.isEmpty() || !isActionRemovable(stored.first()))
        return ResultCode::Refused;
    const int code = ProgKeysDatabase::instance().deleteAction(idAction);
    if (code != StorageCode::Success)
        return code;
    // A provisioned key refuses, and stays without its action until it is provisioned anew.
    const QList<qlonglong> boundKeys = ProgKeysDatabase::instance().keyIdsWithAction(idAction);
    for (const qlonglong idKey : boundKeys)
        deleteProgrammableKey(idKey);
    ZELEvent event;
    events::actionDeleted(event, idAction);
    return ResultCode::Success;
}

bool ZelProgrammableKeys::isActionRemovable(const Action &action)
{
    return action.dmId.isEmpty();
}
