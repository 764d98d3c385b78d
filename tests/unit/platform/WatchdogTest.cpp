#include "Watchdog.h"

#include "support/LogCapture.h"
#include "support/TestProgram.h"

#include <limits>

/// The watchdog interval in the environment.
class WatchdogTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        qunsetenv("WATCHDOG_USEC");
        qunsetenv("WATCHDOG_PID");
    }

    void thePeriodIsHalfTheInterval_data()
    {
        const QByteArray self = QByteArray::number(QCoreApplication::applicationPid());
        QTest::addColumn<QByteArray>("interval");
        QTest::addColumn<QByteArray>("process");
        QTest::addColumn<int>("period");
        QTest::newRow("an interval for any process") << QByteArray("500000") << QByteArray() << 250;
        QTest::newRow("an interval for this process") << QByteArray("30000000") << self << 15000;
        QTest::newRow("an interval for another process")
            << QByteArray("30000000") << QByteArray("1") << 0;
        QTest::newRow("no interval") << QByteArray() << self << 0;
        QTest::newRow("an interval shorter than the resolution of a timer")
            << QByteArray("1") << self << 1;
        QTest::newRow("an interval longer than the range of a timer")
            << QByteArray("9223372036854775807") << self << std::numeric_limits<int>::max();
    }

    void thePeriodIsHalfTheInterval()
    {
        QFETCH(QByteArray, interval);
        QFETCH(QByteArray, process);
        QFETCH(int, period);
        unit::LogCapture log(7);
        if (!interval.isNull())
            qputenv("WATCHDOG_USEC", interval);
        if (!process.isNull())
            qputenv("WATCHDOG_PID", process);
        const zel::Watchdog watchdog;
        QCOMPARE(watchdog.period(), std::chrono::milliseconds(period));
        QCOMPARE(watchdog.isAwaited(), period > 0);
        QCOMPARE(log.take(), QStringList());
    }

    void anInvalidIntervalIsLoggedAsAWarning_data()
    {
        QTest::addColumn<QByteArray>("interval");
        QTest::newRow("a word") << QByteArray("often");
        QTest::newRow("zero") << QByteArray("0");
    }

    void anInvalidIntervalIsLoggedAsAWarning()
    {
        QFETCH(QByteArray, interval);
        unit::LogCapture log(7);
        qputenv("WATCHDOG_USEC", interval);
        QVERIFY(!zel::Watchdog().isAwaited());
        const QStringList lines = log.take();
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().startsWith(
            QStringLiteral("warning: The watchdog's interval is invalid: ")));
    }
};

PROGKEYS_TEST(WatchdogTest)
#include "WatchdogTest.moc"
