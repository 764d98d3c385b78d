#include <zelcore/ZELApplication.h>
#include <zelcore/ZELException.h>
#include <zelcore/ZELLogger.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <QEvent>
#include <QTimer>

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace {

/// An application object for the length of a test.
struct Running
{
    int argc = 1;
    char name[12] = "application";
    char *argv[2] = {name, nullptr};
    ZELApplication application{argc, argv};
};

class Thrower : public QObject
{
public:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::User)
            throw new ZELException(nullptr, 5, QStringLiteral("from an event"));
        return QObject::event(event);
    }
};

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { qputenv("ZEL_DATA_ROOT", "/nonexistent/"); }

    void theDataRootComesFromTheEnvironment_data();
    void theDataRootComesFromTheEnvironment();
    void theDataRootHasADefault();
    void theDataRootIsAPropertyToo();
    void anExceptionThatLeavesAnEventIsLoggedOnceAndTheLoopGoesOn();
    void linesOfTheLibrariesGoIntoTheSameLog();
    void aTerminationSignalEndsTheLoopWithStatusZero_data();
    void aTerminationSignalEndsTheLoopWithStatusZero();
    void aTerminationSignalIsSeenBeforeTheLoopComesRoundToIt();
    void newsOfASignalMayBeAsOldAsTheCallerSays();
    void endEndsTheLoopWithStatusZero();
    void aLogThatNobodyReadsAnyMoreDoesNotEndTheProcess();
};

void ApplicationTest::theDataRootComesFromTheEnvironment_data()
{
    QTest::addColumn<QByteArray>("variable");
    QTest::addColumn<QString>("root");
    QTest::newRow("with a slash") << QByteArray("/tmp/data/") << QStringLiteral("/tmp/data/");
    QTest::newRow("without a slash") << QByteArray("/tmp/data") << QStringLiteral("/tmp/data/");
    QTest::newRow("empty") << QByteArray("") << QStringLiteral("/data/ZELApplication/");
}

void ApplicationTest::theDataRootComesFromTheEnvironment()
{
    QFETCH(QByteArray, variable);
    QFETCH(QString, root);
    qputenv("ZEL_DATA_ROOT", variable);
    QCOMPARE(ZELApplication::dataRoot(), root);
}

void ApplicationTest::theDataRootHasADefault()
{
    qunsetenv("ZEL_DATA_ROOT");
    QCOMPARE(ZELApplication::dataRoot(), QStringLiteral("/data/ZELApplication/"));
}

void ApplicationTest::theDataRootIsAPropertyToo()
{
    qputenv("ZEL_DATA_ROOT", "/tmp/data");
    const Running running;
    QCOMPARE(running.application.property("dataRoot").toString(), QStringLiteral("/tmp/data/"));
}

void ApplicationTest::anExceptionThatLeavesAnEventIsLoggedOnceAndTheLoopGoesOn()
{
    const Running running;
    Thrower thrower;
    unit::LogCapture log(7);
    for (int count = 0; count < 2; ++count)
        QCoreApplication::postEvent(&thrower, new QEvent(QEvent::User));
    QTimer::singleShot(0, &thrower, [] { QCoreApplication::exit(3); });
    QCOMPARE(ZELApplication::exec(), 3);
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.first().startsWith(QStringLiteral("error: ")));
    QVERIFY(lines.first().endsWith(QStringLiteral("from an event")));
    QCOMPARE(lines.first(), lines.last());
}

void ApplicationTest::linesOfTheLibrariesGoIntoTheSameLog()
{
    const Running running;
    unit::LogCapture log(7);
    qDebug("d");
    qInfo("i");
    qWarning("w %%1");
    qCritical("c");
    QCOMPARE(log.take(),
             (QStringList{QStringLiteral("debug: d"), QStringLiteral("info: i"),
                          QStringLiteral("warning: w %1"), QStringLiteral("error: c")}));
    ZELLogger::setConfiguredLevel(3);
    qWarning("w");
    qCritical("c");
    QCOMPARE(log.take(), QStringList{QStringLiteral("error: c")});
}

void ApplicationTest::aTerminationSignalEndsTheLoopWithStatusZero_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void ApplicationTest::aTerminationSignalEndsTheLoopWithStatusZero()
{
    QFETCH(int, number);
    const Running running;
    QTimer::singleShot(0, &running.application, [number] { raise(number); });
    QTimer::singleShot(20000, &running.application, [] { QCoreApplication::exit(-1); });
    QCOMPARE(ZELApplication::exec(), 0);
}

void ApplicationTest::aTerminationSignalIsSeenBeforeTheLoopComesRoundToIt()
{
    QVERIFY(!ZELApplication::isEnding());
    const Running running;
    QVERIFY(!ZELApplication::isEnding());
    raise(SIGTERM);
    QVERIFY(ZELApplication::isEnding());
    QVERIFY(ZELApplication::isEnding());
}

void ApplicationTest::newsOfASignalMayBeAsOldAsTheCallerSays()
{
    const Running running;
    QVERIFY(!ZELApplication::isEnding());
    raise(SIGTERM);
    QVERIFY(!ZELApplication::isEnding(std::chrono::hours(1)));
    QVERIFY(ZELApplication::isEnding());
    QVERIFY(ZELApplication::isEnding(std::chrono::hours(1)));
}

void ApplicationTest::endEndsTheLoopWithStatusZero()
{
    const Running running;
    QTimer::singleShot(0, &running.application, &ZELApplication::end);
    QTimer::singleShot(20000, &running.application, [] { QCoreApplication::exit(-1); });
    QCOMPARE(ZELApplication::exec(), 0);
    QVERIFY(ZELApplication::isEnding());
}

void ApplicationTest::aLogThatNobodyReadsAnyMoreDoesNotEndTheProcess()
{
    const Running running;
    int pipe[2];
    QCOMPARE(::pipe(pipe), 0);
    ::close(pipe[0]);
    QVERIFY(::write(pipe[1], "x", 1) < 0);
    QCOMPARE(errno, EPIPE);
    ::close(pipe[1]);
}

PROGKEYS_TEST_MAIN_WITHOUT_APPLICATION(ApplicationTest)
#include "ApplicationTest.moc"
