#include "LogLevelNames.h"

#include "support/TestMain.h"

/// Levels by their names.
class LogLevelNamesTest : public QObject
{
    Q_OBJECT

private slots:
    void aLevelAndItsNameBelongTogether_data();
    void aLevelAndItsNameBelongTogether();
    void aLevelBeyondTheLastIsNamedAsThat_data();
    void aLevelBeyondTheLastIsNamedAsThat();
    void whatIsNoNameHasNoLevel_data();
    void whatIsNoNameHasNoLevel();
};

void LogLevelNamesTest::aLevelAndItsNameBelongTogether_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("level");
    int level = 0;
    for (const char *name : {"emerg", "alert", "crit", "err", "warning", "notice", "info", "debug"})
        QTest::newRow(name) << QString::fromLatin1(name) << level++;
}

void LogLevelNamesTest::aLevelAndItsNameBelongTogether()
{
    QFETCH(QString, name);
    QFETCH(int, level);
    QCOMPARE(zel::logLevelName(level), name);
    QCOMPARE(zel::logLevelNamed(name), std::make_optional(level));
    QCOMPARE(zel::logLevelNames().value(level), name);
    QCOMPARE(zel::logLevelNames().size(), 8);
}

void LogLevelNamesTest::aLevelBeyondTheLastIsNamedAsThat_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("name");
    QTest::newRow("below the lowest") << -1 << QStringLiteral("emerg");
    QTest::newRow("above the highest") << 8 << QStringLiteral("debug");
}

void LogLevelNamesTest::aLevelBeyondTheLastIsNamedAsThat()
{
    QFETCH(int, level);
    QFETCH(QString, name);
    QCOMPARE(zel::logLevelName(level), name);
}

void LogLevelNamesTest::whatIsNoNameHasNoLevel_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("nothing") << QString();
    QTest::newRow("a number") << QStringLiteral("7");
    QTest::newRow("a longer word") << QStringLiteral("error");
    QTest::newRow("capitals") << QStringLiteral("DEBUG");
    QTest::newRow("a blank behind it") << QStringLiteral("debug ");
}

void LogLevelNamesTest::whatIsNoNameHasNoLevel()
{
    QFETCH(QString, name);
    QCOMPARE(zel::logLevelNamed(name), std::nullopt);
}

PROGKEYS_TEST_MAIN(LogLevelNamesTest)
#include "LogLevelNamesTest.moc"
