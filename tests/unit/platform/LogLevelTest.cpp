#include "support/TestMain.h"

#include <QProcess>

/// The level as the environment configures it, read in a process of its own each time.
class LogLevelTest : public QObject
{
    Q_OBJECT

private slots:
    void theEnvironmentSetsTheLevel_data();
    void theEnvironmentSetsTheLevel();
    void theLevelIsSixIfNothingSetsIt();

private:
    static int levelIn(const QProcessEnvironment &environment);
};

int LogLevelTest::levelIn(const QProcessEnvironment &environment)
{
    QProcess probe;
    probe.setProcessEnvironment(environment);
    probe.start(QCoreApplication::applicationDirPath() +
                    QStringLiteral("/unit_platform_levelprobe"),
                QStringList());
    const bool ended = probe.waitForFinished() && probe.exitStatus() == QProcess::NormalExit;
    return ended ? probe.exitCode() : -1;
}

void LogLevelTest::theEnvironmentSetsTheLevel_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("level");
    for (int level = 0; level <= 7; ++level)
        QTest::addRow("level %d", level) << QString::number(level) << level;
    QTest::newRow("an empty text counts as none") << QString() << 6;
    QTest::newRow("a word counts as none") << QStringLiteral("debug") << 6;
    QTest::newRow("a number that is too great counts as none") << QStringLiteral("8") << 6;
    QTest::newRow("a negative number counts as none") << QStringLiteral("-1") << 6;
    QTest::newRow("a number and more counts as none") << QStringLiteral("3x") << 6;
}

void LogLevelTest::theEnvironmentSetsTheLevel()
{
    QFETCH(QString, text);
    QFETCH(int, level);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("ZEL_LOG_LEVEL"), text);
    QCOMPARE(levelIn(environment), level);
}

void LogLevelTest::theLevelIsSixIfNothingSetsIt()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("ZEL_LOG_LEVEL"));
    QCOMPARE(levelIn(environment), 6);
}

PROGKEYS_TEST_MAIN(LogLevelTest)
#include "LogLevelTest.moc"
