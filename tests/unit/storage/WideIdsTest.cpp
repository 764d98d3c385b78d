#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <limits>

namespace {

ProgKeysDatabase &database()
{
    return unit::database();
}

constexpr qlonglong Wide = (qlonglong{1} << 40) + 5;

void addIdRows()
{
    QTest::addColumn<qlonglong>("id");
    QTest::newRow("the first beyond 32 bits") << (qlonglong{1} << 31);
    QTest::newRow("the first beyond 32 bits without a sign") << (qlonglong{1} << 32);
    QTest::newRow("one that a double cannot hold") << (qlonglong{1} << 53) + 1;
    QTest::newRow("the last of all") << std::numeric_limits<qlonglong>::max();
}

/// The next record of the table gets this id.
void goOnWith(const QString &table, qlonglong id)
{
    OtherProgram().execute(
        {QStringLiteral("DELETE FROM sqlite_sequence WHERE name = '%1'").arg(table),
         QStringLiteral("INSERT INTO sqlite_sequence VALUES ('%1', %2)").arg(table).arg(id - 1)});
}

} // namespace

/// Ids are 64 bits wide everywhere.
class WideIdsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { database().resetTables(); }

    void aKeyOfAWideIdIsInsertedReadUpdatedAndDeleted_data() { addIdRows(); }
    void aKeyOfAWideIdIsInsertedReadUpdatedAndDeleted();
    void anActionOfAWideIdIsInsertedReadUpdatedAndDeleted_data() { addIdRows(); }
    void anActionOfAWideIdIsInsertedReadUpdatedAndDeleted();
    void keysAreFoundByTheWideIdOfTheirActionAndNotByItsLowBits();
    void aTableWithoutAnotherIdRefusesTheNextRecord();
};

void WideIdsTest::aKeyOfAWideIdIsInsertedReadUpdatedAndDeleted()
{
    QFETCH(qlonglong, id);
    goOnWith(QStringLiteral("KEY"), id);
    Key key = unit::sampleKey();
    const Insertion inserted = database().insertKey(key);
    QCOMPARE(inserted.code, 0);
    QCOMPARE(inserted.id, id);
    key.idKey = id;
    QCOMPARE(database().key(id), ListKey{key});
    key.icon = QStringLiteral("other");
    QCOMPARE(database().updateKey(key), 0);
    QCOMPARE(database().allKeys(), ListKey{key});
    QCOMPARE(database().keyIdsWithAction(key.idAction), QList<qlonglong>{id});
    QCOMPARE(database().deleteKey(id), 0);
    QCOMPARE(database().allKeys(), ListKey());
}

void WideIdsTest::anActionOfAWideIdIsInsertedReadUpdatedAndDeleted()
{
    QFETCH(qlonglong, id);
    goOnWith(QStringLiteral("ACTION"), id);
    Action action = unit::sampleAction();
    const Insertion inserted = database().insertAction(action);
    QCOMPARE(inserted.code, 0);
    QCOMPARE(inserted.id, id);
    action.idAction = id;
    QCOMPARE(database().action(id), ListAction{action});
    action.label = QStringLiteral("other");
    QCOMPARE(database().updateAction(action), 0);
    QVERIFY(database().actionWithDmId(action.dmId) == action);
    QCOMPARE(database().deleteAction(id), 0);
    QCOMPARE(database().action(id), ListAction());
}

void WideIdsTest::keysAreFoundByTheWideIdOfTheirActionAndNotByItsLowBits()
{
    Key key = unit::sampleKey();
    key.idAction = Wide;
    key.idKey = database().insertKey(key).id;
    QCOMPARE(database().keyIdsWithAction(Wide), QList<qlonglong>{key.idKey});
    QCOMPARE(database().keysOfTypeWithAction(key.type, Wide), ListKey{key});
    QCOMPARE(database().keyIdsWithAction(5), QList<qlonglong>());
    QCOMPARE(database().key(key.idKey).first().idAction, Wide);
}

void WideIdsTest::aTableWithoutAnotherIdRefusesTheNextRecord()
{
    goOnWith(QStringLiteral("KEY"), std::numeric_limits<qlonglong>::max());
    QCOMPARE(database().insertKey(unit::sampleKey()).code, 0);
    QCOMPARE(database().insertKey(unit::sampleKey()).code, -3);
    QCOMPARE(database().allKeys().size(), 1);
}

PROGKEYS_TEST_MAIN(WideIdsTest)
#include "WideIdsTest.moc"
