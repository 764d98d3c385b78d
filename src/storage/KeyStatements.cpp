#include "records/ResultCode.h"
#include "storage/ProgKeysDatabase.h"
#include "storage/Statement.h"

#include <iterator>

namespace {

using SelectKeys = SelectStatement<Key>;

} // namespace

Insertion ProgKeysDatabase::insertKey(const Key &key)
{
    static Statement statement("INSERT INTO KEY (container, idAction, position, icon, type, "
                               "aom_type, aom_addr, dmId) VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    return statement.insert({stored(key.container), key.idAction, key.position, stored(key.icon),
                             key.type, key.aom_type, key.aom_addr, stored(key.dmId)});
}

int ProgKeysDatabase::updateKey(const Key &key)
{
    static Statement statement(
        "UPDATE KEY SET container=?, idAction=?, position=?, icon=?, type=?, "
        "aom_type=?, aom_addr=?, dmId=? WHERE idKey=?");
    return statement.change({stored(key.container), key.idAction, key.position, stored(key.icon),
                             key.type, key.aom_type, key.aom_addr, stored(key.dmId), key.idKey});
}

bool ProgKeysDatabase::updateKeyPositions(const QMapIntInt &positions)
{
    static Statement statement("UPDATE KEY SET position=? WHERE idKey=?");
    // Qt 5 keeps all entries of a repeated id, with the last one first. Only the last entry
    // applies.
    const auto isRepeated = [&positions](QMapIntInt::const_iterator entry) {
        return entry != positions.cbegin() && std::prev(entry).key() == entry.key();
    };
    for (auto entry = positions.cbegin(); entry != positions.cend(); ++entry) {
        if (isRepeated(entry))
            continue;
        if (statement.change({entry.value(), entry.key()}) == ResultCode::Failed)
            return false;
    }
    return true;
}

int ProgKeysDatabase::deleteKey(qlonglong idKey)
{
    static Statement statement("DELETE FROM KEY WHERE idKey=?");
    return statement.change({idKey});
}

void ProgKeysDatabase::deleteProvisionedKeys()
{
    static Statement statement("DELETE FROM KEY WHERE DMID<>''");
    statement.change({}); // logs a failure
}

ListKey ProgKeysDatabase::key(qlonglong idKey)
{
    static SelectKeys statement(
        "SELECT idKey, container, idAction, position, icon, type, aom_type, "
        "aom_addr, dmId FROM KEY WHERE idKey=?");
    return zeroOrOne(statement.readFirst({idKey}));
}

ListKey ProgKeysDatabase::keysInContainer(const QString &container)
{
    static SelectKeys statement(
        "SELECT idKey, container, idAction, position, icon, type, aom_type, "
        "aom_addr, dmId FROM KEY WHERE container=?");
    return statement.read({stored(container)});
}

ListKey ProgKeysDatabase::allKeys()
{
    static SelectKeys statement("SELECT idKey, container, idAction, position, icon, type, "
                                "aom_type, aom_addr, dmId FROM KEY");
    return statement.read({});
}

ListKey ProgKeysDatabase::keysOfTypeWithAction(int type, qlonglong idAction)
{
    static SelectKeys statement("SELECT idKey, DMID, container, idAction, position, icon, type, "
                                "aom_type, aom_addr FROM KEY WHERE type=? and idAction=?");
    return statement.read({type, idAction});
}

std::optional<Key> ProgKeysDatabase::keyAtPlace(int type, int position, int aom_type, int aom_addr)
{
    static SelectKeys statement("SELECT idKey, DMID, container, idAction, position, icon, type, "
                                "aom_type, aom_addr FROM KEY WHERE type=? and position=? and "
                                "aom_type=? and aom_addr=?");
    return statement.readFirst({type, position, aom_type, aom_addr});
}

QList<qlonglong> ProgKeysDatabase::keyIdsWithAction(qlonglong idAction)
{
    static SelectStatement<qlonglong, SingleColumn<qlonglong>> statement(
        "SELECT idKey FROM KEY WHERE idAction=?");
    return statement.read({idAction});
}

int ProgKeysDatabase::countKeysOfType(int type)
{
    static SelectStatement<int, SingleColumn<int>> statement(
        "SELECT COUNT(*) FROM KEY WHERE type=?");
    return statement.readFirst({type}).value_or(0);
}
