#include "storage/Statements.h"

#include "storage/ProgKeysDatabase.h"
#include "support/Samples.h"
#include "support/Service.h"

namespace {

ProgKeysDatabase &database()
{
    return unit::database();
}

Key storedKey()
{
    Key key = unit::sampleKey();
    key.idKey = 1;
    key.idAction = 1;
    return key;
}

Action storedAction()
{
    Action action = unit::sampleAction();
    action.idAction = 1;
    return action;
}

template <typename List>
QString records(const List &list)
{
    return list.isEmpty() ? QStringLiteral("no record")
                          : QStringLiteral("%1 record(s)").arg(list.size());
}

template <typename Record>
QString records(const std::optional<Record> &record)
{
    return records(record ? QList<Record>{*record} : QList<Record>());
}

QString code(int value)
{
    return QString::number(value);
}

QString truth(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

const QString OneRecord = QStringLiteral("1 record(s)");
const QString TwoRecords = QStringLiteral("2 record(s)");
const QString NoRecord = QStringLiteral("no record");
const QString Done = QStringLiteral("0");
const QString Failed = QStringLiteral("-3");

const std::vector<StatementCase> KeyCases = {
    {"inserting a key",
     "INSERT INTO KEY (container, idAction, position, icon, type, aom_type, aom_addr, dmId) "
     "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
     "KEY", [] { return code(database().insertKey(storedKey()).code); }, Done, Failed},
    {"updating a key",
     "UPDATE KEY SET container=?, idAction=?, position=?, icon=?, type=?, aom_type=?, "
     "aom_addr=?, dmId=? WHERE idKey=?",
     "KEY", [] { return code(database().updateKey(storedKey())); }, Done, Failed},
    {"moving a key", "UPDATE KEY SET position=? WHERE idKey=?", "KEY",
     [] {
         return truth(database().updateKeyPositions({{1, 2}}));
     },
     QStringLiteral("true"), QStringLiteral("false")},
    {"deleting a key", "DELETE FROM KEY WHERE idKey=?", "KEY",
     [] { return code(database().deleteKey(1)); }, Done, Failed},
    {"deleting every provisioned key", "DELETE FROM KEY WHERE DMID<>''", "KEY",
     [] {
         database().deleteProvisionedKeys();
         return QStringLiteral("nothing");
     },
     QStringLiteral("nothing"), QStringLiteral("nothing")},
    {"reading a key by its id",
     "SELECT idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId FROM KEY "
     "WHERE idKey=?",
     "KEY", [] { return records(database().key(1)); }, OneRecord, NoRecord},
    {"reading the keys of a container",
     "SELECT idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId FROM KEY "
     "WHERE container=?",
     "KEY", [] { return records(database().keysInContainer(QStringLiteral("home"))); }, OneRecord,
     NoRecord},
    {"reading all keys",
     "SELECT idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId FROM KEY",
     "KEY", [] { return records(database().allKeys()); }, OneRecord, NoRecord},
    {"counting the keys of a type", "SELECT COUNT(*) FROM KEY WHERE type=?", "KEY",
     [] { return code(database().countKeysOfType(44)); }, QStringLiteral("1"), Done},
    {"reading the ids of the keys of an action", "SELECT idKey FROM KEY WHERE idAction=?", "KEY",
     [] { return records(database().keyIdsWithAction(1)); }, OneRecord, NoRecord},
    {"reading the keys of a type and an action",
     "SELECT idKey, DMID, container, idAction, position, icon, type, aom_type, aom_addr FROM KEY "
     "WHERE type=? and idAction=?",
     "KEY", [] { return records(database().keysOfTypeWithAction(44, 1)); }, OneRecord, NoRecord},
    {"reading the key at a place",
     "SELECT idKey, DMID, container, idAction, position, icon, type, aom_type, aom_addr FROM KEY "
     "WHERE type=? and position=? and aom_type=? and aom_addr=?",
     "KEY", [] { return records(database().keyAtPlace(44, 33, 55, 66)); }, OneRecord, NoRecord},
};

const std::vector<StatementCase> ActionCases = {
    {"inserting an action",
     "INSERT INTO ACTION (type, action, webAppName, arguments, label, shortLabel, dmId) "
     "VALUES (?, ?, ?, ?, ?, ?, ?)",
     "ACTION", [] { return code(database().insertAction(storedAction()).code); }, Done, Failed},
    {"updating an action",
     "UPDATE ACTION SET type=?, action=?, webAppName=?, arguments=?, label=?, shortLabel=?, "
     "dmId=? WHERE idAction=?",
     "ACTION", [] { return code(database().updateAction(storedAction())); }, Done, Failed},
    {"deleting an action", "DELETE FROM ACTION WHERE idAction=?", "ACTION",
     [] { return code(database().deleteAction(1)); }, Done, Failed},
    {"reading an action by its id",
     "SELECT idAction, DMID, type, action, webAppName, arguments, label, shortLabel, dmId "
     "FROM ACTION WHERE idAction=?",
     "ACTION", [] { return records(database().action(1)); }, OneRecord, NoRecord},
    {"reading the action of a provisioning identifier",
     "SELECT idAction, DMID, type, action, webAppName, arguments, label, shortLabel FROM ACTION "
     "WHERE DMID=?",
     "ACTION", [] { return records(database().actionWithDmId(QStringLiteral("dm"))); }, OneRecord,
     NoRecord},
    {"reading all actions",
     "SELECT idAction, type, action, webAppName, arguments, label, shortLabel, dmId FROM ACTION",
     "ACTION", [] { return records(database().allActions()); }, TwoRecords, NoRecord},
};

std::vector<StatementCase> joined()
{
    std::vector<StatementCase> all = KeyCases;
    all.insert(all.end(), ActionCases.cbegin(), ActionCases.cend());
    return all;
}

} // namespace

const std::vector<StatementCase> &allStatements()
{
    static const std::vector<StatementCase> all = joined();
    return all;
}

void layStatementRows()
{
    database().resetTables();
    database().insertAction(storedAction());
    database().insertKey(storedKey());
}
