#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "storage/Statements.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QRegularExpression>

namespace {

ProgKeysDatabase &database()
{
    return unit::database();
}

void addStatementRows()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const StatementCase &statement : allStatements())
        QTest::newRow(statement.description) << index++;
}

const StatementCase &statementAt(int index)
{
    return allStatements().at(static_cast<size_t>(index));
}

void dropTable(const StatementCase &statement)
{
    OtherProgram().execute({QStringLiteral("DROP TABLE %1").arg(QLatin1String(statement.table))});
}

/// The line with question marks again, where the database driver has written names of its own.
QString withQuestionMarks(QString line)
{
    static const QRegularExpression placeholder(QStringLiteral(":[a-z0-9]+\\b"));
    return line.replace(placeholder, QStringLiteral("?"));
}

void verifyOneLine(unit::LogCapture &log, const StatementCase &statement, const QString &reason)
{
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QCOMPARE(withQuestionMarks(lines.first()),
             QStringLiteral("error: Error: %1 %2").arg(QLatin1String(statement.text), reason));
}

/// Runs the statement without its table.
void verifyFailure(const StatementCase &statement, const char *driversReason)
{
    unit::LogCapture log(3);
    QCOMPARE(statement.run(), statement.failure);
    verifyOneLine(log, statement,
                  QStringLiteral("no such table: %1 %2")
                      .arg(QLatin1String(statement.table), QLatin1String(driversReason)));
}

const char *const WhilePreparing = "Unable to execute statement";
const char *const WhileExecuting = "Unable to fetch row";

void refuse(const char *table, const char *operation)
{
    OtherProgram().execute({QStringLiteral("CREATE TRIGGER refuse BEFORE %2 ON %1 "
                                           "BEGIN SELECT RAISE(ABORT, 'no room'); END")
                                .arg(QLatin1String(table), QLatin1String(operation))});
}

} // namespace

/// Statements that fail, and that work again once they can.
class FailuresTest : public QObject
{
    Q_OBJECT

private slots:
    // First, while no statement has been prepared yet.
    void aStatementThatCannotBePreparedFailsAndIsTriedAgain_data() { addStatementRows(); }
    void aStatementThatCannotBePreparedFailsAndIsTriedAgain();
    void aPreparedStatementFailsWithoutItsTableAndWorksOnceItIsBack_data() { addStatementRows(); }
    void aPreparedStatementFailsWithoutItsTableAndWorksOnceItIsBack();
    void aPreparedStatementSurvivesAReset_data() { addStatementRows(); }
    void aPreparedStatementSurvivesAReset();
    void aFailureWritesNothingAtLevelTwo_data() { addStatementRows(); }
    void aFailureWritesNothingAtLevelTwo();

    void aRefusedWriteHasTheCodeOfAFailedStatement_data();
    void aRefusedWriteHasTheCodeOfAFailedStatement();
    void aRefusedInsertionNamesNoRow();
};

void FailuresTest::aStatementThatCannotBePreparedFailsAndIsTriedAgain()
{
    QFETCH(int, index);
    const StatementCase &statement = statementAt(index);
    database().resetTables();
    dropTable(statement);
    database().checkTables(); // lets the connection see that the table is gone
    verifyFailure(statement, WhilePreparing);
    verifyFailure(statement, WhilePreparing);
    database().resetTables();
    unit::LogCapture log(7);
    statement.run();
    QCOMPARE(log.take(), QStringList());
}

void FailuresTest::aPreparedStatementFailsWithoutItsTableAndWorksOnceItIsBack()
{
    QFETCH(int, index);
    const StatementCase &statement = statementAt(index);
    layStatementRows();
    QCOMPARE(statement.run(), statement.success);
    dropTable(statement);
    verifyFailure(statement, WhileExecuting);
    layStatementRows();
    QCOMPARE(statement.run(), statement.success);
}

void FailuresTest::aPreparedStatementSurvivesAReset()
{
    QFETCH(int, index);
    const StatementCase &statement = statementAt(index);
    for (int round = 0; round < 3; ++round) {
        layStatementRows();
        unit::LogCapture log(7);
        QCOMPARE(statement.run(), statement.success);
        QCOMPARE(log.take(), QStringList());
    }
}

void FailuresTest::aFailureWritesNothingAtLevelTwo()
{
    QFETCH(int, index);
    const StatementCase &statement = statementAt(index);
    database().resetTables();
    dropTable(statement);
    unit::LogCapture log(2);
    QCOMPARE(statement.run(), statement.failure);
    QCOMPARE(log.take(), QStringList());
}

void FailuresTest::aRefusedWriteHasTheCodeOfAFailedStatement_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("operation");
    int index = 0;
    for (const StatementCase &statement : allStatements()) {
        const QByteArray operation = QByteArray(statement.text).split(' ').first();
        if (operation != "SELECT")
            QTest::newRow(statement.description) << index << operation;
        ++index;
    }
}

void FailuresTest::aRefusedWriteHasTheCodeOfAFailedStatement()
{
    QFETCH(int, index);
    QFETCH(QByteArray, operation);
    const StatementCase &statement = statementAt(index);
    layStatementRows();
    const ListKey keys = database().allKeys();
    const ListAction actions = database().allActions();
    refuse(statement.table, operation.constData());
    unit::LogCapture log(3);
    QCOMPARE(statement.run(), statement.failure);
    verifyOneLine(log, statement, QStringLiteral("no room Unable to fetch row"));
    QCOMPARE(database().allKeys(), keys);
    QCOMPARE(database().allActions(), actions);
}

void FailuresTest::aRefusedInsertionNamesNoRow()
{
    layStatementRows();
    refuse("KEY", "INSERT");
    const Insertion key = database().insertKey(unit::sampleKey());
    QVERIFY(key.id < 1);
    QVERIFY(key.code < 0);
    layStatementRows();
    refuse("ACTION", "INSERT");
    const Insertion action = database().insertAction(unit::sampleAction());
    QVERIFY(action.id < 1);
    QVERIFY(action.code < 0);
}

PROGKEYS_TEST_MAIN(FailuresTest)
#include "FailuresTest.moc"
