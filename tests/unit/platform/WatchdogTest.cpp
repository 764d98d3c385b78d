#include "Watchdog.h"

#include "NotifySocket.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

#include <limits>

using zel::Watchdog;

namespace {

const QString Alive = QStringLiteral("WATCHDOG=1");

} // namespace

/// Who is told, and how often, that the event loop turns.
class WatchdogTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void theEnvironmentSaysHowOften_data();
    void theEnvironmentSaysHowOften();
    void anIntervalThatIsNoneIsWarnedOf_data();
    void anIntervalThatIsNoneIsWarnedOf();
    void theEventLoopFeedsAgainAndAgain();
    void aFeedingThatIsNotNeededYetIsLeftOut();
    void aFeedingThatIsNeededIsNot();
    void aFeedingIsNeededWellBeforeTheIntervalIsOver();
    void nothingIsFedWhereNobodyWaits_data();
    void nothingIsFedWhereNobodyWaits();
};

void WatchdogTest::cleanup()
{
    qunsetenv("WATCHDOG_USEC");
    qunsetenv("WATCHDOG_PID");
}

void WatchdogTest::theEnvironmentSaysHowOften_data()
{
    const QByteArray itself = QByteArray::number(QCoreApplication::applicationPid());
    QTest::addColumn<QByteArray>("interval");
    QTest::addColumn<QByteArray>("process");
    QTest::addColumn<int>("period");
    QTest::newRow("half a second") << QByteArray("500000") << QByteArray() << 250;
    QTest::newRow("half a minute, for this process") << QByteArray("30000000") << itself << 15000;
    QTest::newRow("half a minute, for another process")
        << QByteArray("30000000") << QByteArray("1") << 0;
    QTest::newRow("no interval") << QByteArray() << itself << 0;
    QTest::newRow("an interval that no timer resolves") << QByteArray("1") << itself << 1;
    QTest::newRow("an interval that no timer can hold")
        << QByteArray("9223372036854775807") << itself << std::numeric_limits<int>::max();
}

void WatchdogTest::theEnvironmentSaysHowOften()
{
    QFETCH(QByteArray, interval);
    QFETCH(QByteArray, process);
    QFETCH(int, period);
    unit::LogCapture log(7);
    if (!interval.isNull())
        qputenv("WATCHDOG_USEC", interval);
    if (!process.isNull())
        qputenv("WATCHDOG_PID", process);
    const Watchdog watchdog;
    QCOMPARE(watchdog.period(), std::chrono::milliseconds(period));
    QCOMPARE(watchdog.isAwaited(), period > 0);
    QCOMPARE(log.take(), QStringList());
}

void WatchdogTest::anIntervalThatIsNoneIsWarnedOf_data()
{
    QTest::addColumn<QByteArray>("interval");
    QTest::newRow("a word") << QByteArray("often");
    QTest::newRow("no time at all") << QByteArray("0");
}

void WatchdogTest::anIntervalThatIsNoneIsWarnedOf()
{
    QFETCH(QByteArray, interval);
    unit::LogCapture log(7);
    qputenv("WATCHDOG_USEC", interval);
    const Watchdog watchdog;
    QVERIFY(!watchdog.isAwaited());
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().startsWith(QStringLiteral("warning: ")), qUtf8Printable(lines.first()));
}

void WatchdogTest::theEventLoopFeedsAgainAndAgain()
{
    NotifySocket socket;
    qputenv("WATCHDOG_USEC", "20000");
    const Watchdog watchdog;
    QStringList fed;
    QVERIFY(QTest::qWaitFor([&] { return (fed += socket.take()).size() >= 3; }, 20000));
    QCOMPARE(fed.count(Alive), fed.size());
}

void WatchdogTest::aFeedingThatIsNotNeededYetIsLeftOut()
{
    NotifySocket socket;
    qputenv("WATCHDOG_USEC", "3600000000");
    Watchdog watchdog;
    watchdog.feed();
    watchdog.feed();
    QCOMPARE(socket.take(), QStringList{Alive});
}

void WatchdogTest::aFeedingThatIsNeededIsNot()
{
    NotifySocket socket;
    qputenv("WATCHDOG_USEC", "1");
    Watchdog watchdog;
    watchdog.feed();
    watchdog.feed();
    QCOMPARE(socket.take(), (QStringList{Alive, Alive}));
}

void WatchdogTest::aFeedingIsNeededWellBeforeTheIntervalIsOver()
{
    NotifySocket socket;
    qputenv("WATCHDOG_USEC", "4000000");
    Watchdog watchdog;
    watchdog.feed();
    QCOMPARE(socket.take(), QStringList{Alive});
    QElapsedTimer sinceThen;
    sinceThen.start();
    // The event loop does not turn meanwhile.
    QStringList fed;
    while (fed.isEmpty() && !sinceThen.hasExpired(20000)) {
        watchdog.feed();
        fed = socket.take();
    }
    QCOMPARE(fed, QStringList{Alive});
    QVERIFY(sinceThen.elapsed() < 4000);
}

void WatchdogTest::nothingIsFedWhereNobodyWaits_data()
{
    QTest::addColumn<QByteArray>("process");
    QTest::newRow("no watchdog") << QByteArray();
    QTest::newRow("a watchdog for another process") << QByteArray("1");
}

void WatchdogTest::nothingIsFedWhereNobodyWaits()
{
    QFETCH(QByteArray, process);
    NotifySocket socket;
    if (!process.isNull()) {
        qputenv("WATCHDOG_USEC", "1");
        qputenv("WATCHDOG_PID", process);
    }
    Watchdog watchdog;
    watchdog.feed();
    QCOMPARE(socket.take(), QStringList());
}

PROGKEYS_TEST_MAIN(WatchdogTest)
#include "WatchdogTest.moc"
