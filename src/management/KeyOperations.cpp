#include "app/ZelProgrammableKeys.h"
#include "events/Notifications.h"
#include "logging.h"
#include "provisioning/SettingsReader.h"
#include "storage/ProgKeysDatabase.h"

namespace {

bool actionExists(qlonglong idAction)
{
    if (!ProgKeysDatabase::instance().action(idAction).isEmpty())
        return true;
    logging::error("Action of id %1 does not exist", idAction);
    return false;
}

// The limit is read for a key of any type, so that a peer sees the same call for each, but it
// holds only keys of the set; counting those takes a walk through the table, which the others are
// spared. A setting that cannot be read is no limit.
bool isRoomFor(const Key &key)
{
    bool isLimited = true;
    const int limit = SettingsReader::instance()
                          .getSettingValue(QStringLiteral("ProgKeysMax"), &isLimited)
                          .toInt();
    return key.type != KeyType::Set || !isLimited ||
           ProgKeysDatabase::instance().countKeysOfType(KeyType::Set) < limit;
}

void resetModuleIcon(const Key &key)
{
    ZELEvent event;
    events::setModuleIcon(event, events::placeOf(key), 0, 0);
}

} // namespace

ListKey ZelProgrammableKeys::getAllProgrammableKeys()
{
    return ProgKeysDatabase::instance().allKeys();
}

ListKey ZelProgrammableKeys::getProgrammableKeysByContainer(const QString &container)
{
    return ProgKeysDatabase::instance().keysInContainer(container);
}

ListKey ZelProgrammableKeys::getProgrammableKey(qlonglong idKey)
{
    return ProgKeysDatabase::instance().key(idKey);
}

qlonglong ZelProgrammableKeys::createProgrammableKey(Key key)
{
    if (!actionExists(key.idAction))
        return ResultCode::Refused;
    if (!isRoomFor(key)) {
        ZELEvent event;
        events::keysFull(event);
        return ResultCode::KeysFull;
    }
    const Insertion insertion = ProgKeysDatabase::instance().insertKey(key);
    key.idKey = insertion.id;
    if (insertion.code != StorageCode::Success)
        return ResultCode::Refused;
    ZELEvent event;
    events::keyCreated(event, key);
    if (key.type == KeyType::AddOnModule)
        resetModuleIcon(key);
    return key.idKey;
}

int ZelProgrammableKeys::modifyProgrammableKey(const Key &key)
{
    const ListKey stored = ProgKeysDatabase::instance().key(key.idKey);
    const Key old = stored.isEmpty() ? Key() : stored.first();
    if (!actionExists(key.idAction))
        return ResultCode::Refused;
    const int code = ProgKeysDatabase::instance().updateKey(key);
    if (code != StorageCode::Success)
        return code;
    ZELEvent event;
    events::keyModified(event, key);
    if (key.type == KeyType::AddOnModule && old.icon != key.icon)
        resetModuleIcon(key);
    return ResultCode::Success;
}

bool ZelProgrammableKeys::changeProgrammableKeysPosition(const QMapIntInt &listId)
{
    return ProgKeysDatabase::instance().updateKeyPositions(listId);
}

int ZelProgrammableKeys::deleteProgrammableKey(qlonglong idKey)
{
    logging::debug("deleteProgrammableKey : idKey=%1", idKey);
    const ListKey keys = ProgKeysDatabase::instance().key(idKey);
    logging::debug("deleteProgrammableKey : listKey.size=%1", keys.size());
    if (keys.isEmpty())
        return ResultCode::Refused;
    logging::debug("deleteProgrammableKey : get key from the list");
    const Key &key = keys.first();
    logging::debug("deleteProgrammableKey : id=%1", key.idKey);
    if (!isProgrammableKeyRemovable(key))
        return ResultCode::Refused;
    logging::debug("deleteProgrammableKey : delete key from database");
    const int code = ProgKeysDatabase::instance().deleteKey(key.idKey);
    if (code != StorageCode::Success)
        return code;
    ZELEvent event;
    events::keyDeleted(event, key.idKey);
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
