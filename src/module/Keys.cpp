#include "logging.h"
#include "module/ZelProgrammableKeys.h"
#include "provisioning/SettingsReader.h"
#include "records/ResultCode.h"
#include "storage/ProgKeysDatabase.h"

ListKey ZelProgrammableKeys::getAllProgrammableKeys()
{
    return database().allKeys();
}

ListKey ZelProgrammableKeys::getProgrammableKeysByContainer(const QString &container)
{
    return database().keysInContainer(container);
}

ListKey ZelProgrammableKeys::getProgrammableKey(qlonglong idKey)
{
    return database().key(idKey);
}

qlonglong ZelProgrammableKeys::createProgrammableKey(Key key)
{
    if (!actionExists(key.idAction))
        return ResultCode::Refused;
    if (!hasRoomFor(key)) {
        ZELEvent event;
        notifications().keysFull(event);
        return ResultCode::KeysFull;
    }
    const Insertion insertion = database().insertKey(key);
    key.idKey = insertion.id;
    if (insertion.code != ResultCode::Success)
        return ResultCode::Refused;
    ZELEvent event;
    notifications().keyCreated(event, key);
    if (key.type == KeyType::AddOnModule)
        showDefaultIcon(key);
    return key.idKey;
}

int ZelProgrammableKeys::modifyProgrammableKey(const Key &key)
{
    const ListKey stored = database().key(key.idKey);
    const Key old = stored.isEmpty() ? Key() : stored.first();
    if (!actionExists(key.idAction))
        return ResultCode::Refused;
    const int code = database().updateKey(key);
    if (code != ResultCode::Success)
        return code;
    ZELEvent event;
    notifications().keyModified(event, key);
    if (key.type == KeyType::AddOnModule && old.icon != key.icon)
        showDefaultIcon(key);
    return ResultCode::Success;
}

bool ZelProgrammableKeys::changeProgrammableKeysPosition(const QMapIntInt &listId)
{
    return database().updateKeyPositions(listId);
}

int ZelProgrammableKeys::deleteProgrammableKey(qlonglong idKey)
{
    logging::debug("deleteProgrammableKey : idKey=%1", idKey);
    const ListKey keys = database().key(idKey);
    logging::debug("deleteProgrammableKey : listKey.size=%1", keys.size());
    if (keys.isEmpty())
        return ResultCode::Refused;
    logging::debug("deleteProgrammableKey : get key from the list");
    const Key &key = keys.first();
    logging::debug("deleteProgrammableKey : id=%1", key.idKey);
    if (!isProgrammableKeyRemovable(key))
        return ResultCode::Refused;
    logging::debug("deleteProgrammableKey : delete key from database");
    const int code = database().deleteKey(key.idKey);
    if (code != ResultCode::Success)
        return code;
    ZELEvent event;
    notifications().keyDeleted(event, key.idKey);
    return ResultCode::Success;
}

bool ZelProgrammableKeys::isProgrammableKeyRemovable(const Key &key)
{
    const bool isRemovable = key.dmId.isEmpty();
    logging::debug("isProgrammableKeyRemovable : id=%1", key.idKey);
    logging::debug("isProgrammableKeyRemovable : idDM=%1", key.dmId);
    logging::debug("isProgrammableKeyRemovable : value=%1", int{isRemovable});
    return isRemovable;
}

bool ZelProgrammableKeys::actionExists(qlonglong idAction)
{
    if (!database().action(idAction).isEmpty())
        return true;
    logging::error("Action of id %1 does not exist", idAction);
    return false;
}

// Counts the keys first and then reads the limit, for keys of all types. If the setting cannot be
// read, there is no limit.
bool ZelProgrammableKeys::hasRoomFor(const Key &key)
{
    const int count = database().countKeysOfType(KeyType::Set);
    bool isRead = true;
    const int limit = SettingsReader::instance(*this)
                          .getSettingValue(QStringLiteral("ProgKeysMax"), &isRead)
                          .toInt();
    return key.type != KeyType::Set || !isRead || count < limit;
}

void ZelProgrammableKeys::showDefaultIcon(const Key &key)
{
    ZELEvent event;
    notifications().setModuleIcon(event, placeOf(key), 0, 0);
}
