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

QString schemaOf(const char *table)
{
    return OtherProgram()
        .value(QStringLiteral("SELECT sql FROM sqlite_master WHERE name = '%1'")
                   .arg(QLatin1String(table)))
        .toString();
}

/// Something that a DROP TABLE cannot drop and a CREATE TABLE IF NOT EXISTS leaves alone.
void replaceByView(const char *table)
{
    const QString name = QLatin1String(table);
    OtherProgram().execute({QStringLiteral("DROP TABLE %1").arg(name),
                            QStringLiteral("CREATE VIEW %1 AS SELECT 1").arg(name)});
}

} // namespace

/// The schema reset.
class SchemaTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void theTablesHaveExactlyTheirTexts();
    void onlyTheReservedActionIsThereAfterAReset();
    void aResetEmptiesTablesThatHoldRecords();
    void idsBeginAtOneAgainAfterAReset();
    void aResetMakesTablesThatAreMissing();
    void aResetLogsNothing();
    void aResetThatCannotDropTheKeysSaysSoAndGoesOn();
    void aResetThatCannotDropTheActionsSaysSoAndGoesOn();
    void aResetThatFailsWritesNothingAtLevelTwo();
};

void SchemaTest::init()
{
    const unit::LogCapture silence(0);
    database().resetTables();
}

void SchemaTest::theTablesHaveExactlyTheirTexts()
{
    QCOMPARE(schemaOf("KEY"),
             QStringLiteral("CREATE TABLE KEY (idKey     INTEGER PRIMARY KEY AUTOINCREMENT, "
                            "container VARCHAR,idAction  BIGINT,position  INTEGER,"
                            "icon      VARCHAR,type      INTEGER,aom_type  INTEGER,"
                            "aom_addr  INTEGER,dmId  VARCHAR)"));
    QCOMPARE(schemaOf("ACTION"),
             QStringLiteral("CREATE TABLE ACTION (idAction   INTEGER PRIMARY KEY AUTOINCREMENT,"
                            "type       INTEGER,action     VARCHAR,webAppName VARCHAR,"
                            "arguments  VARCHAR,label      VARCHAR,shortLabel VARCHAR,"
                            "dmId VARCHAR)"));
}

void SchemaTest::onlyTheReservedActionIsThereAfterAReset()
{
    const OtherProgram other;
    QCOMPARE(other.value(QStringLiteral("SELECT COUNT(*) FROM KEY")), QVariant(0));
    QCOMPARE(other.value(QStringLiteral("SELECT COUNT(*) FROM ACTION")), QVariant(1));
    const QString none = QStringLiteral("");
    QCOMPARE(other.row(QStringLiteral("SELECT idAction, type, action, webAppName, arguments, "
                                      "label, shortLabel, dmId FROM ACTION")),
             (QVariantList{-1, -1, none, none, none, none, none, none}));
}

void SchemaTest::aResetEmptiesTablesThatHoldRecords()
{
    database().insertKey(unit::sampleKey());
    database().insertAction(unit::sampleAction());
    database().resetTables();
    QCOMPARE(database().allKeys(), ListKey());
    QCOMPARE(database().allActions().size(), 1);
}

void SchemaTest::idsBeginAtOneAgainAfterAReset()
{
    database().insertKey(unit::sampleKey());
    database().insertAction(unit::sampleAction());
    database().resetTables();
    QCOMPARE(database().insertKey(unit::sampleKey()).id, qlonglong{1});
    QCOMPARE(database().insertAction(unit::sampleAction()).id, qlonglong{1});
}

void SchemaTest::aResetMakesTablesThatAreMissing()
{
    OtherProgram().execute({QStringLiteral("DROP TABLE KEY"), QStringLiteral("DROP TABLE ACTION")});
    database().resetTables();
    theTablesHaveExactlyTheirTexts();
    onlyTheReservedActionIsThereAfterAReset();
}

void SchemaTest::aResetLogsNothing()
{
    unit::LogCapture log(7);
    database().resetTables();
    QCOMPARE(log.take(), QStringList());
}

void SchemaTest::aResetThatCannotDropTheKeysSaysSoAndGoesOn()
{
    database().insertAction(unit::sampleAction());
    replaceByView("KEY");
    unit::LogCapture log(3);
    database().resetTables();
    const QStringList lines = log.take();
    OtherProgram().execute({QStringLiteral("DROP VIEW KEY")});
    QVERIFY2(lines.value(0).startsWith(QStringLiteral("error: Error: DROP TABLE IF EXISTS KEY ")),
             qUtf8Printable(lines.join(QLatin1Char('\n'))));
    QCOMPARE(database().allActions().size(), 1);
}

void SchemaTest::aResetThatCannotDropTheActionsSaysSoAndGoesOn()
{
    database().insertKey(unit::sampleKey());
    replaceByView("ACTION");
    unit::LogCapture log(3);
    database().resetTables();
    const QStringList lines = log.take();
    OtherProgram().execute({QStringLiteral("DROP VIEW ACTION")});
    QVERIFY2(
        lines.value(0).startsWith(QStringLiteral("error: Error: DROP TABLE IF EXISTS ACTION ")),
        qUtf8Printable(lines.join(QLatin1Char('\n'))));
    QVERIFY2(lines.last().startsWith(QStringLiteral(
                 "error: Error: INSERT INTO ACTION (idAction, type, action, webAppName, arguments, "
                 "label, shortLabel, dmId) VALUES (-1, -1, '', '', '', '', '', '') ")),
             qUtf8Printable(lines.join(QLatin1Char('\n'))));
    QCOMPARE(database().allKeys(), ListKey());
}

void SchemaTest::aResetThatFailsWritesNothingAtLevelTwo()
{
    replaceByView("KEY");
    unit::LogCapture log(2);
    database().resetTables();
    QCOMPARE(log.take(), QStringList());
    OtherProgram().execute({QStringLiteral("DROP VIEW KEY")});
}

PROGKEYS_TEST_MAIN(SchemaTest)
#include "SchemaTest.moc"
