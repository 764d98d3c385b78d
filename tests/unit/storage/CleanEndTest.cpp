#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDir>

/// What the end of the application object leaves behind.
class CleanEndTest : public QObject
{
    Q_OBJECT

private slots:
    void aCleanEndLeavesTheSingleDatabaseFile();
};

void CleanEndTest::aCleanEndLeavesTheSingleDatabaseFile()
{
    QString directory;
    {
        int argc = 1;
        char name[] = "clean-end";
        char *argv[] = {name, nullptr};
        QCoreApplication application(argc, argv);
        application.setProperty("dataRoot", qEnvironmentVariable("ZEL_DATA_ROOT"));
        directory = OtherProgram::directory();
        ProgKeysDatabase &database = unit::database();
        database.resetTables();
        // Statements of every kind are prepared and must not keep the connection open.
        QCOMPARE(database.insertKey(unit::sampleKey()).code, 0);
        QCOMPARE(database.key(1).size(), 1);
        QCOMPARE(database.allActions().size(), 1);
        QVERIFY(QDir(directory).entryList(QDir::Files).size() > 1);
    }
    QCOMPARE(QDir(directory).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("zelprogrammablekeys.data")});
}

PROGKEYS_TEST_MAIN_WITHOUT_APPLICATION(CleanEndTest)
#include "CleanEndTest.moc"
