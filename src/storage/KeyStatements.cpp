#include "storage/ProgKeysDatabase.h"
#include "storage/Statement.h"

#include <iterator>

namespace {

class KeyColumns
{
public:
    explicit KeyColumns(const QSqlRecord &record)
        : m_idKey(record.indexOf(QStringLiteral("idKey"))),
          m_dmId(record.indexOf(QStringLiteral("dmId"))),
          m_container(record.indexOf(QStringLiteral("container"))),
          m_idAction(record.indexOf(QStringLiteral("idAction"))),
          m_position(record.indexOf(QStringLiteral("position"))),
          m_icon(record.indexOf(QStringLiteral("icon"))),
          m_type(record.indexOf(QStringLiteral("type"))),
          m_aomType(record.indexOf(QStringLiteral("aom_type"))),
          m_aomAddr(record.indexOf(QStringLiteral("aom_addr")))
    {
    }

    Key read(const QSqlQuery &row) const
    {
        Key key;
        key.idKey = row.value(m_idKey).toLongLong();
        key.dmId = row.value(m_dmId).toString();
        key.container = row.value(m_container).toString();
        key.idAction = row.value(m_idAction).toLongLong();
        key.position = row.value(m_position).toInt();
        key.icon = row.value(m_icon).toString();
        key.type = row.value(m_type).toInt();
        key.aom_type = row.value(m_aomType).toInt();
        key.aom_addr = row.value(m_aomAddr).toInt();
        return key;
    }

private:
    int m_idKey;
    int m_dmId;
    int m_container;
    int m_idAction;
    int m_position;
    int m_icon;
    int m_type;
    int m_aomType;
    int m_aomAddr;
};

using SelectKeys = SelectStatement<Key, KeyColumns>;

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
    // Qt 5 keeps all entries of an id that came more than once, the last one first; that one
    // counts.
    const auto isRepeated = [&positions](QMapIntInt::const_iterator entry) {
        return entry != positions.cbegin() && std::prev(entry).key() == entry.key();
    };
    for (auto entry = positions.cbegin(); entry != positions.cend(); ++entry) {
        if (isRepeated(entry))
            continue;
        if (statement.change({entry.value(), entry.key()}) == StorageCode::Failed)
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
    statement.change({}); // the log says if it failed
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
    static SelectStatement<qlonglong, FirstColumn<qlonglong>> statement(
        "SELECT idKey FROM KEY WHERE idAction=?");
    return statement.read({idAction});
}

int ProgKeysDatabase::countKeysOfType(int type)
{
    static SelectStatement<int, FirstColumn<int>> statement(
        "SELECT COUNT(*) FROM KEY WHERE type=?");
    return statement.readFirst({type}).value_or(0);
}
