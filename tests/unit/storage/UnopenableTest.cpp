#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "storage/Statements.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace {

/// What the SQL library says about a connection that is not open.
void expectLibraryWarning()
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("database not open|Driver not loaded")));
}

} // namespace

/// A database file that could not be opened.
class UnopenableTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void nothingTellsOfTheFailedOpen();
    void everyStatementFailsAndSaysWhy_data();
    void everyStatementFailsAndSaysWhy();
    void theCheckFailsAtTheKeys();
    void aResetSaysWhyAtEachStepAndReturns();
    void openingIsNotTriedAgain();

private:
    QStringList m_firstLines;
};

void UnopenableTest::initTestCase()
{
    // A file where the directory should be.
    const QString root = QCoreApplication::instance()->property("dataRoot").toString();
    QVERIFY(QDir().mkpath(root));
    QFile obstacle(root + QStringLiteral("ZelProgrammableKeys"));
    QVERIFY(obstacle.open(QIODevice::WriteOnly));
    unit::LogCapture log(7);
    unit::database();
    m_firstLines = log.take();
}

void UnopenableTest::nothingTellsOfTheFailedOpen()
{
    QCOMPARE(m_firstLines, QStringList{QStringLiteral("debug: Connecting to database at %1...")
                                           .arg(OtherProgram::fileName())});
}

void UnopenableTest::everyStatementFailsAndSaysWhy_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const StatementCase &statement : allStatements())
        QTest::newRow(statement.description) << index++;
}

void UnopenableTest::everyStatementFailsAndSaysWhy()
{
    QFETCH(int, index);
    const StatementCase &statement = allStatements().at(static_cast<size_t>(index));
    expectLibraryWarning();
    unit::LogCapture log(3);
    QCOMPARE(statement.run(), statement.failure);
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    const QString beginning =
        QStringLiteral("error: Error: %1 ").arg(QLatin1String(statement.text));
    QVERIFY2(lines.first().startsWith(beginning), qUtf8Printable(lines.first()));
    QVERIFY2(lines.first().contains(QStringLiteral("unable to open")),
             qUtf8Printable(lines.first()));
}

void UnopenableTest::theCheckFailsAtTheKeys()
{
    expectLibraryWarning();
    unit::LogCapture log(6);
    QVERIFY(!unit::database().checkTables());
    QCOMPARE(log.take(),
             QStringList{QStringLiteral("info: Table Key is not correct. Check fails")});
}

void UnopenableTest::aResetSaysWhyAtEachStepAndReturns()
{
    constexpr int steps = 5;
    for (int step = 0; step < steps; ++step)
        expectLibraryWarning();
    unit::LogCapture log(3);
    unit::database().resetTables();
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), steps);
    QVERIFY(lines.first().startsWith(QStringLiteral("error: Error: DROP TABLE IF EXISTS KEY ")));
    QVERIFY(
        lines.last().startsWith(QStringLiteral("error: Error: INSERT INTO ACTION (idAction, ")));
}

void UnopenableTest::openingIsNotTriedAgain()
{
    const QString root = QCoreApplication::instance()->property("dataRoot").toString();
    QVERIFY(QFile::remove(root + QStringLiteral("ZelProgrammableKeys")));
    QVERIFY(QDir().mkpath(OtherProgram::directory()));
    expectLibraryWarning();
    QCOMPARE(unit::database().insertKey(unit::sampleKey()).code, -3);
    QVERIFY(!QFile::exists(OtherProgram::fileName()));
}

PROGKEYS_TEST_MAIN(UnopenableTest)
#include "UnopenableTest.moc"
