#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

ProgKeysDatabase &database()
{
    return unit::database();
}

/// Stores the sample key, changed, and returns it as it is stored.
Key store(void (*change)(Key &) = [](Key &) {})
{
    Key key = unit::sampleKey();
    change(key);
    key.idKey = database().insertKey(key).id;
    return key;
}

} // namespace

class KeyStatementsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { database().resetTables(); }

    void anInsertedKeyGetsTheNextIdAndNoOther();
    void eachFieldIsStoredInTheColumnOfItsName();
    void nullTextsAreStoredAsEmptyOnes();
    void anUpdateReplacesEveryColumnButTheId();
    void anUpdateOfAnUnknownKeyIsToldByItsCode();
    void anUpdateThatChangesNothingIsASuccess();
    void aDeletedKeyIsGoneAndTheOthersStay();
    void aDeletionOfAnUnknownKeyIsToldByItsCode();
    void onlyProvisionedKeysAreDeletedTogether();

    void movingNoKeyIsTrueAndDoesNotTouchTheDatabase();
    void keysAreMovedInAscendingOrderOfTheirIds();
    void movingAnUnknownKeyIsNoFailure();
    void movingStopsAtTheFirstFailureAndKeepsWhatWasDone();

    void aKeyIsReadByItsId();
    void keysAreReadByTheExactNameOfTheirContainer();
    void allKeysAreRead();
    void keysAreCountedByType();
    void idsAreReadByAction();
    void keysAreReadByTypeAndAction();
    void aKeyIsReadByItsWholePlace_data();
    void aKeyIsReadByItsWholePlace();
};

void KeyStatementsTest::anInsertedKeyGetsTheNextIdAndNoOther()
{
    const Insertion first = database().insertKey(unit::sampleKey());
    QCOMPARE(first.code, 0);
    QCOMPARE(first.id, qlonglong{1});
    QCOMPARE(database().insertKey(unit::sampleKey()).id, qlonglong{2});
    QCOMPARE(OtherProgram().column(QStringLiteral("SELECT idKey FROM KEY")), (QVariantList{1, 2}));
}

void KeyStatementsTest::eachFieldIsStoredInTheColumnOfItsName()
{
    store();
    QCOMPARE(OtherProgram().row(QStringLiteral("SELECT idKey, dmId, container, idAction, position, "
                                               "icon, type, aom_type, aom_addr FROM KEY")),
             (QVariantList{1, QStringLiteral("dm"), QStringLiteral("home"), 22, 33,
                           QStringLiteral("star"), 44, 55, 66}));
}

void KeyStatementsTest::nullTextsAreStoredAsEmptyOnes()
{
    QVERIFY(Key().dmId.isNull());
    const Insertion inserted = database().insertKey(Key());
    const QString isEmpty = QStringLiteral("SELECT dmId = '' AND container = '' AND icon = '' AND "
                                           "typeof(dmId || container || icon) = 'text' FROM KEY");
    QCOMPARE(OtherProgram().value(isEmpty), QVariant(1));

    Key changed;
    changed.idKey = inserted.id;
    QCOMPARE(database().updateKey(changed), 0);
    QCOMPARE(OtherProgram().value(isEmpty), QVariant(1));
    QCOMPARE(database().keysInContainer(QString()).size(), 1);
}

void KeyStatementsTest::anUpdateReplacesEveryColumnButTheId()
{
    store();
    const Key other = store();
    Key changed;
    changed.idKey = 1;
    changed.dmId = QStringLiteral("d");
    changed.container = QStringLiteral("c");
    changed.idAction = 2;
    changed.position = 3;
    changed.icon = QStringLiteral("i");
    changed.type = 4;
    changed.aom_type = 5;
    changed.aom_addr = 6;
    QCOMPARE(database().updateKey(changed), 0);
    QCOMPARE(database().allKeys(), (ListKey{changed, other}));
}

void KeyStatementsTest::anUpdateOfAnUnknownKeyIsToldByItsCode()
{
    const Key stored = store();
    Key unknown = unit::sampleKey();
    unknown.idKey = 2;
    const unit::LogCapture log(7);
    QCOMPARE(database().updateKey(unknown), -2);
    QCOMPARE(database().allKeys(), ListKey{stored});
}

void KeyStatementsTest::anUpdateThatChangesNothingIsASuccess()
{
    QCOMPARE(database().updateKey(store()), 0);
}

void KeyStatementsTest::aDeletedKeyIsGoneAndTheOthersStay()
{
    const Key first = store();
    const Key second = store();
    QCOMPARE(database().deleteKey(first.idKey), 0);
    QCOMPARE(database().allKeys(), ListKey{second});
}

void KeyStatementsTest::aDeletionOfAnUnknownKeyIsToldByItsCode()
{
    unit::LogCapture log(7);
    QCOMPARE(database().deleteKey(1), -2);
    QCOMPARE(log.take(), QStringList());
}

void KeyStatementsTest::onlyProvisionedKeysAreDeletedTogether()
{
    store([](Key &key) { key.dmId = QStringLiteral("D1"); });
    const Key users = store([](Key &key) { key.dmId.clear(); });
    store([](Key &key) { key.dmId = QStringLiteral(" "); });
    database().deleteProvisionedKeys();
    QCOMPARE(database().allKeys(), ListKey{users});

    unit::LogCapture log(7);
    database().deleteProvisionedKeys();
    QCOMPARE(database().allKeys(), ListKey{users});
    QCOMPARE(log.take(), QStringList());
}

void KeyStatementsTest::movingNoKeyIsTrueAndDoesNotTouchTheDatabase()
{
    OtherProgram().execute({QStringLiteral("DROP TABLE KEY")});
    unit::LogCapture log(7);
    QVERIFY(database().updateKeyPositions({}));
    QCOMPARE(log.take(), QStringList());
}

void KeyStatementsTest::keysAreMovedInAscendingOrderOfTheirIds()
{
    const OtherProgram other;
    other.execute({QStringLiteral("CREATE TABLE IF NOT EXISTS moves (idKey)"),
                   QStringLiteral("DELETE FROM moves"),
                   QStringLiteral("CREATE TRIGGER moved AFTER UPDATE ON KEY "
                                  "BEGIN INSERT INTO moves VALUES (NEW.idKey); END")});
    for (int number = 0; number < 3; ++number)
        store();
    QVERIFY(database().updateKeyPositions({{3, 10}, {1, 30}, {2, 20}}));
    QCOMPARE(other.column(QStringLiteral("SELECT position FROM KEY ORDER BY idKey")),
             (QVariantList{30, 20, 10}));
    QCOMPARE(other.column(QStringLiteral("SELECT idKey FROM moves ORDER BY rowid")),
             (QVariantList{1, 2, 3}));
}

void KeyStatementsTest::movingAnUnknownKeyIsNoFailure()
{
    store();
    unit::LogCapture log(7);
    QVERIFY(database().updateKeyPositions({{-1, 5}, {1, 6}, {99, 7}}));
    QVERIFY(database().updateKeyPositions({{99, 7}}));
    QCOMPARE(database().key(1).first().position, 6);
    QCOMPARE(log.take(), QStringList());
}

void KeyStatementsTest::movingStopsAtTheFirstFailureAndKeepsWhatWasDone()
{
    const OtherProgram other;
    for (int number = 0; number < 3; ++number)
        store();
    other.execute({QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE ON KEY WHEN NEW.idKey = 2 "
                                  "BEGIN SELECT RAISE(ABORT, 'stuck'); END")});
    unit::LogCapture log(3);
    QVERIFY(!database().updateKeyPositions({{1, 7}, {2, 8}, {3, 9}}));
    QCOMPARE(other.column(QStringLiteral("SELECT position FROM KEY ORDER BY idKey")),
             (QVariantList{7, 33, 33}));
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(
                 QStringLiteral("error: Error: UPDATE KEY SET position=? WHERE idKey=? stuck")),
             qUtf8Printable(lines.first()));
}

void KeyStatementsTest::aKeyIsReadByItsId()
{
    store();
    const Key second = store([](Key &key) { key.container = QStringLiteral("other"); });
    QCOMPARE(database().key(second.idKey), ListKey{second});
    QCOMPARE(database().key(99), ListKey());
}

void KeyStatementsTest::keysAreReadByTheExactNameOfTheirContainer()
{
    const Key home = store();
    store([](Key &key) { key.container = QStringLiteral("Home"); });
    store([](Key &key) { key.container = QStringLiteral("home "); });
    const Key again = store();
    QCOMPARE(database().keysInContainer(QStringLiteral("home")), (ListKey{home, again}));
    QCOMPARE(database().keysInContainer(QStringLiteral("hom%")), ListKey());
}

void KeyStatementsTest::allKeysAreRead()
{
    QCOMPARE(database().allKeys(), ListKey());
    const Key first = store();
    const Key second = store([](Key &key) { key.type = 0; });
    QCOMPARE(database().allKeys(), (ListKey{first, second}));
}

void KeyStatementsTest::keysAreCountedByType()
{
    store();
    store();
    store([](Key &key) { key.type = 0; });
    QCOMPARE(database().countKeysOfType(44), 2);
    QCOMPARE(database().countKeysOfType(0), 1);
    QCOMPARE(database().countKeysOfType(7), 0);
}

void KeyStatementsTest::idsAreReadByAction()
{
    store();
    store([](Key &key) { key.idAction = 5; });
    store();
    QCOMPARE(database().keyIdsWithAction(22), (QList<qlonglong>{1, 3}));
    QCOMPARE(database().keyIdsWithAction(99), QList<qlonglong>());
}

void KeyStatementsTest::keysAreReadByTypeAndAction()
{
    const Key first = store();
    store([](Key &key) { key.idAction = 5; });
    store([](Key &key) { key.type = 0; });
    const Key last = store();
    QCOMPARE(database().keysOfTypeWithAction(44, 22), (ListKey{first, last}));
    QCOMPARE(database().keysOfTypeWithAction(0, 5), ListKey());
}

void KeyStatementsTest::aKeyIsReadByItsWholePlace_data()
{
    QTest::addColumn<QList<int>>("place");
    QTest::addColumn<int>("found");
    QTest::newRow("its type, position, module type and module address")
        << QList<int>{44, 33, 55, 66} << 1;
    QTest::newRow("another type") << QList<int>{1, 33, 55, 66} << 0;
    QTest::newRow("another position") << QList<int>{44, 1, 55, 66} << 0;
    QTest::newRow("another module type") << QList<int>{44, 33, 1, 66} << 0;
    QTest::newRow("another module address") << QList<int>{44, 33, 55, 1} << 0;
}

void KeyStatementsTest::aKeyIsReadByItsWholePlace()
{
    QFETCH(QList<int>, place);
    QFETCH(int, found);
    const Key key = store();
    store(); // a second one there is not looked for
    const auto seen = database().keyAtPlace(place.at(0), place.at(1), place.at(2), place.at(3));
    QVERIFY(seen == (found ? std::make_optional(key) : std::nullopt));
}

PROGKEYS_TEST_MAIN(KeyStatementsTest)
#include "KeyStatementsTest.moc"
