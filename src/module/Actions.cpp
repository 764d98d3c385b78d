#include "logging.h"
#include "module/ZelProgrammableKeys.h"
#include "records/ResultCode.h"
#include "storage/ProgKeysDatabase.h"

namespace {

constexpr int LabelShown = 1;

} // namespace

ListAction ZelProgrammableKeys::getAllActions()
{
    return database().allActions();
}

ListAction ZelProgrammableKeys::getAction(qlonglong idAction)
{
    return database().action(idAction);
}

qlonglong ZelProgrammableKeys::addAction(Action action)
{
    const Insertion insertion = database().insertAction(action);
    action.idAction = insertion.id;
    if (insertion.code != ResultCode::Success)
        return insertion.code;
    ZELEvent event;
    notifications().actionCreated(event, action);
    return action.idAction;
}

int ZelProgrammableKeys::modifyAction(const Action &action)
{
    const ListAction stored = database().action(action.idAction);
    if (stored.isEmpty()) {
        logging::error("ZelProgrammableKeys::modifyAction(2) : fail !");
        return ResultCode::Refused;
    }
    const Action &old = stored.first();
    const int code = database().updateAction(action);
    if (code != ResultCode::Success) {
        logging::error("ZelProgrammableKeys::modifyAction(1) : fail !");
        return code;
    }
    ZELEvent event;
    notifications().actionModified(event, action);
    if (old.shortLabel != action.shortLabel)
        updateAomLabelsForAction(action.idAction, action.shortLabel);
    return ResultCode::Success;
}

void ZelProgrammableKeys::updateAomLabelsForAction(qlonglong idAction, const QString &label)
{
    const ListKey keys = database().keysOfTypeWithAction(KeyType::AddOnModule, idAction);
    for (const Key &key : keys) {
        ZELEvent event;
        notifications().setModuleLabel(event, placeOf(key), LabelShown, label);
    }
}

int ZelProgrammableKeys::deleteAction(qlonglong idAction)
{
    if (idAction == ReservedActionId) {
        logging::error("Action of id -1 is read only and reserved. Deletion is forbidden.");
        return ResultCode::Refused;
    }
    const ListAction stored = database().action(idAction);
    if (stored.isEmpty() || !isActionRemovable(stored.first()))
        return ResultCode::Refused;
    const int code = database().deleteAction(idAction);
    if (code != ResultCode::Success)
        return code;
    // A provisioned key is not deleted. It keeps the id of the deleted action until the next merge.
    const QList<qlonglong> boundKeys = database().keyIdsWithAction(idAction);
    for (const qlonglong idKey : boundKeys)
        deleteProgrammableKey(idKey);
    ZELEvent event;
    notifications().actionDeleted(event, idAction);
    return ResultCode::Success;
}

bool ZelProgrammableKeys::isActionRemovable(const Action &action)
{
    return action.dmId.isEmpty();
}
