#include <zelcore/ZELLogger.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <QRegularExpression>

class LoggerTest : public QObject
{
    Q_OBJECT

private slots:
    void aLineIsWrittenUpToTheConfiguredLevel_data();
    void aLineIsWrittenUpToTheConfiguredLevel();
    void aLineIsTimeNameProcessLevelAndText();
    void theTextStandsLastUnaltered_data();
    void theTextStandsLastUnaltered();
    void theCategoryOfTheModuleIsTheEmptyOne();
    void everyCallIsALineOfItsOwn();
};

void LoggerTest::aLineIsWrittenUpToTheConfiguredLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    const QString error = QStringLiteral("error: e");
    const QString warning = QStringLiteral("warning: w");
    const QString info = QStringLiteral("info: i");
    const QString debug = QStringLiteral("debug: d");
    QTest::newRow("level 0 writes nothing") << 0 << QStringList();
    QTest::newRow("level 2 writes nothing") << 2 << QStringList();
    QTest::newRow("level 3 writes errors") << 3 << QStringList{error};
    QTest::newRow("level 4 writes warnings, too") << 4 << QStringList{error, warning};
    QTest::newRow("level 5 writes no more than that") << 5 << QStringList{error, warning};
    QTest::newRow("level 6 writes what is good to know") << 6 << QStringList{error, warning, info};
    QTest::newRow("level 7 writes all") << 7 << QStringList{error, warning, info, debug};
}

void LoggerTest::aLineIsWrittenUpToTheConfiguredLevel()
{
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    unit::LogCapture log(level);
    QCOMPARE(ZELLogger::getConfiguredLevel(), level);
    logger().error(QStringLiteral("e"));
    logger().warning(QStringLiteral("w"));
    logger().info(QStringLiteral("i"));
    logger().debug(QStringLiteral("d"));
    QCOMPARE(log.take(), lines);
}

void LoggerTest::aLineIsTimeNameProcessLevelAndText()
{
    QCoreApplication::setApplicationName(QStringLiteral("Some Name"));
    unit::LogCapture log(7);
    logger().warning(QStringLiteral("the text"));
    const QStringList lines = log.takeRaw();
    QCOMPARE(lines.size(), 1);
    const QRegularExpression form(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} Some Name\\[%1\\] "
                       "warning: the text$")
            .arg(QCoreApplication::applicationPid()));
    QVERIFY2(form.match(lines.first()).hasMatch(), qUtf8Printable(lines.first()));
}

void LoggerTest::theTextStandsLastUnaltered_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("an empty text") << QString();
    QTest::newRow("placeholders") << QStringLiteral("%1 %s %n %%");
    QTest::newRow("blanks around it") << QStringLiteral("  a\tb  ");
    QTest::newRow("beyond ASCII") << QString::fromUtf8("Grüße 電話 \U0001F4DE");
    QTest::newRow("something like a prefix") << QStringLiteral("<3>error: e");
    QTest::newRow("a long text") << QString(100000, QLatin1Char('x'));
}

void LoggerTest::theTextStandsLastUnaltered()
{
    QFETCH(QString, text);
    unit::LogCapture log(3);
    logger().error(text);
    QCOMPARE(log.take(), QStringList{QStringLiteral("error: ") + text});
}

void LoggerTest::theCategoryOfTheModuleIsTheEmptyOne()
{
    unit::LogCapture log(3);
    logger(QString()).error(QStringLiteral("text"));
    logger().error(QStringLiteral("text"));
    const QStringList lines = log.take();
    QCOMPARE(lines, (QStringList{QStringLiteral("error: text"), QStringLiteral("error: text")}));
    logger(QStringLiteral("storage")).error(QStringLiteral("text"));
    const QStringList named = log.take();
    QCOMPARE(named.size(), 1);
    QVERIFY(named.first().contains(QStringLiteral("storage")));
    QVERIFY(named.first().endsWith(QStringLiteral(" text")));
}

void LoggerTest::everyCallIsALineOfItsOwn()
{
    unit::LogCapture log(7);
    for (int number = 0; number < 100; ++number)
        logger().info(QString::number(number));
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 100);
    QCOMPARE(lines.last(), QStringLiteral("info: 99"));
}

PROGKEYS_TEST_MAIN(LoggerTest)
#include "LoggerTest.moc"
