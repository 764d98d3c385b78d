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

const QStringList KeyColumns =
    QStringLiteral("idKey container idAction position icon type aom_type aom_addr dmId")
        .split(QLatin1Char(' '));
const QStringList ActionColumns =
    QStringLiteral("idAction type action webAppName arguments label shortLabel dmId")
        .split(QLatin1Char(' '));

const QString KeyComplaint = QStringLiteral("info: Table Key is not correct. Check fails");
const QString ActionComplaint = QStringLiteral("info: Table Action is not correct. Check fails");

void replaceTable(const QString &table, const QStringList &columns)
{
    OtherProgram().execute(
        {QStringLiteral("DROP TABLE IF EXISTS %1").arg(table),
         QStringLiteral("CREATE TABLE %1 (%2)").arg(table, columns.join(QLatin1Char(',')))});
}

QStringList without(QStringList columns, const QString &missing)
{
    columns.removeAll(missing);
    return columns;
}

void addRowForEach(const QStringList &columns)
{
    QTest::addColumn<QString>("missing");
    for (const QString &column : columns)
        QTest::addRow("the column %s is missing", qUtf8Printable(column)) << column;
}

} // namespace

class CheckTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { database().resetTables(); }

    void emptyTablesPass();
    void tablesThatHoldRecordsPassAndStayAsTheyAre();
    void columnsInAnotherOrderAndFurtherOnesPass();
    void aKeyTableWithoutAColumnFails_data() { addRowForEach(KeyColumns); }
    void aKeyTableWithoutAColumnFails();
    void anActionTableWithoutAColumnFails_data() { addRowForEach(ActionColumns); }
    void anActionTableWithoutAColumnFails();
    void aMissingTableFails_data();
    void aMissingTableFails();
    void aFailureIsToldOfFromLevelSixUpward_data();
    void aFailureIsToldOfFromLevelSixUpward();
    void aCheckThatFailedPassesOnceTheTablesAreBack();
};

void CheckTest::emptyTablesPass()
{
    OtherProgram().execute({QStringLiteral("DELETE FROM ACTION")});
    unit::LogCapture log(7);
    QVERIFY(database().checkTables());
    QCOMPARE(log.take(), QStringList());
}

void CheckTest::tablesThatHoldRecordsPassAndStayAsTheyAre()
{
    database().insertKey(unit::sampleKey());
    database().insertAction(unit::sampleAction());
    QVERIFY(database().checkTables());
    QCOMPARE(database().allKeys().size(), 1);
    QCOMPARE(database().allActions().size(), 2);
}

void CheckTest::columnsInAnotherOrderAndFurtherOnesPass()
{
    QStringList columns = KeyColumns;
    std::reverse(columns.begin(), columns.end());
    replaceTable(QStringLiteral("KEY"), columns + QStringList{QStringLiteral("more")});
    QVERIFY(database().checkTables());
}

void CheckTest::aKeyTableWithoutAColumnFails()
{
    QFETCH(QString, missing);
    replaceTable(QStringLiteral("KEY"), without(KeyColumns, missing));
    // The action table is not looked at any more: it would fail, too.
    OtherProgram().execute({QStringLiteral("DROP TABLE ACTION")});
    unit::LogCapture log(7);
    QVERIFY(!database().checkTables());
    QCOMPARE(log.take(), QStringList{KeyComplaint});
}

void CheckTest::anActionTableWithoutAColumnFails()
{
    QFETCH(QString, missing);
    replaceTable(QStringLiteral("ACTION"), without(ActionColumns, missing));
    unit::LogCapture log(7);
    QVERIFY(!database().checkTables());
    QCOMPARE(log.take(), QStringList{ActionComplaint});
}

void CheckTest::aMissingTableFails_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("there are no keys") << QStringLiteral("KEY") << KeyComplaint;
    QTest::newRow("there are no actions") << QStringLiteral("ACTION") << ActionComplaint;
}

void CheckTest::aMissingTableFails()
{
    QFETCH(QString, table);
    QFETCH(QString, complaint);
    OtherProgram().execute({QStringLiteral("DROP TABLE %1").arg(table)});
    unit::LogCapture log(7);
    QVERIFY(!database().checkTables());
    QCOMPARE(log.take(), QStringList{complaint});
}

void CheckTest::aFailureIsToldOfFromLevelSixUpward_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("lines");
    QTest::newRow("level 5 is too low") << 5 << 0;
    QTest::newRow("level 6 suffices") << 6 << 1;
    QTest::newRow("level 7 does, too") << 7 << 1;
}

void CheckTest::aFailureIsToldOfFromLevelSixUpward()
{
    QFETCH(int, level);
    QFETCH(int, lines);
    for (const char *table : {"KEY", "ACTION"}) {
        database().resetTables();
        OtherProgram().execute({QStringLiteral("DROP TABLE %1").arg(QLatin1String(table))});
        unit::LogCapture log(level);
        QVERIFY(!database().checkTables());
        QCOMPARE(log.take().size(), lines);
    }
}

void CheckTest::aCheckThatFailedPassesOnceTheTablesAreBack()
{
    OtherProgram().execute({QStringLiteral("DROP TABLE KEY")});
    QVERIFY(!database().checkTables());
    database().resetTables();
    QVERIFY(database().checkTables());
}

PROGKEYS_TEST_MAIN(CheckTest)
#include "CheckTest.moc"
