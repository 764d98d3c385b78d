#include "ServiceManager.h"

#include "NotifySocket.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <zelcore/ZELApplication.h>

#include <QTimer>

#include <csignal>
#include <functional>

using Ending = std::function<void()>;
Q_DECLARE_METATYPE(Ending)

namespace {

const QString Stopping = QStringLiteral("STOPPING=1\nSTATUS=Ending");

} // namespace

/// What the service manager is told.
class ServiceManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void eachMessageReachesTheSocket();
    void withoutASocketNothingIsSaid();
    void aSocketThatIsNotThereIsWarnedOfOnce();
    void anEndIsToldOnce_data();
    void anEndIsToldOnce();
    void anEndIsToldAsSoonAsItsSignalIsSeen();
};

void ServiceManagerTest::eachMessageReachesTheSocket()
{
    NotifySocket socket;
    zel::tellReady(QString::fromUtf8("Grüße"));
    zel::tellAlive();
    zel::tellAlive();
    zel::tellStopping();
    QCOMPARE(socket.take(),
             (QStringList{QString::fromUtf8("READY=1\nSTATUS=Grüße"), QStringLiteral("WATCHDOG=1"),
                          QStringLiteral("WATCHDOG=1"), Stopping}));
}

void ServiceManagerTest::withoutASocketNothingIsSaid()
{
    unit::LogCapture log(7);
    zel::tellReady(QStringLiteral("up"));
    zel::tellStopping();
    QCOMPARE(log.take(), QStringList());
}

void ServiceManagerTest::aSocketThatIsNotThereIsWarnedOfOnce()
{
    unit::LogCapture log(7);
    qputenv("NOTIFY_SOCKET", "/nonexistent/notify");
    zel::tellAlive();
    zel::tellAlive();
    qunsetenv("NOTIFY_SOCKET");
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    // Without an application object the line has no name before its process.
    QVERIFY2(lines.first().contains(QStringLiteral("] warning: Cannot tell the service manager: ")),
             qUtf8Printable(lines.first()));
}

void ServiceManagerTest::anEndIsToldOnce_data()
{
    QTest::addColumn<Ending>("ending");
    QTest::newRow("on demand") << Ending([] { ZELApplication::end(); });
    QTest::newRow("on demand, twice") << Ending([] {
        ZELApplication::end();
        ZELApplication::end();
    });
    QTest::newRow("by a signal") << Ending([] { raise(SIGTERM); });
    QTest::newRow("by a failure") << Ending([] { QCoreApplication::exit(1); });
}

void ServiceManagerTest::anEndIsToldOnce()
{
    QFETCH(Ending, ending);
    NotifySocket socket;
    int argc = 1;
    char name[] = "application";
    char *argv[] = {name, nullptr};
    const ZELApplication application(argc, argv);
    QStringList before;
    QTimer::singleShot(0, &application, [&] {
        before = socket.take();
        ending();
    });
    QTimer::singleShot(20000, &application, [] { QCoreApplication::exit(-1); });
    QVERIFY(ZELApplication::exec() >= 0);
    QCOMPARE(before, QStringList());
    QCOMPARE(socket.take(), QStringList{Stopping});
}

void ServiceManagerTest::anEndIsToldAsSoonAsItsSignalIsSeen()
{
    NotifySocket socket;
    int argc = 1;
    char name[] = "application";
    char *argv[] = {name, nullptr};
    const ZELApplication application(argc, argv);
    raise(SIGTERM);
    QVERIFY(ZELApplication::isEnding());
    QCOMPARE(socket.take(), QStringList{Stopping});
}

PROGKEYS_TEST_MAIN_WITHOUT_APPLICATION(ServiceManagerTest)
#include "ServiceManagerTest.moc"
