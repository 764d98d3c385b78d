#include "SubjectProcess.h"
#include "support/BusClient.h"
#include "support/TestMain.h"

#include <QDBusConnectionInterface>
#include <QDBusServiceWatcher>
#include <QDir>

#include <csignal>

namespace {

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The one line of a failed start-up; the test fails if there are more.
QString onlyErrorLine(const SubjectProcess &subject)
{
    const QStringList lines = subject.log().filter(QStringLiteral("error: "));
    return lines.size() == 1
               ? lines.first()
               : QStringLiteral("%1 lines: ").arg(lines.size()) + lines.join(QLatin1Char('\n'));
}

} // namespace

/// The framework brings a module up.
class StartUpTest : public QObject
{
    Q_OBJECT

private slots:
    void hooksRunInTheirOrder_data();
    void hooksRunInTheirOrder();
    void aHookThatSaysNoIsNamedAndEndsTheProcess_data();
    void aHookThatSaysNoIsNamedAndEndsTheProcess();
    void aHookThatThrowsEndsTheProcess_data();
    void aHookThatThrowsEndsTheProcess();
    void aNameThatIsTakenIsNamedAndNoHookRuns();
    void noHookRunsWhileAnotherProcessStartsTheModule_data();
    void noHookRunsWhileAnotherProcessStartsTheModule();
    void aSignalDuringAHookEndsTheStartWithStatusZero_data();
    void aSignalDuringAHookEndsTheStartWithStatusZero();
    void aBusThatIsNotThereIsNamedAndNoHookRuns();
    void whoeverSeesTheNameIsAnswered();
    void aModuleWithoutAnAdaptorAppearsWithItsLifecycle();
    void aStartUpThatGoesWellSaysNothing();
    void theNameIsFreeAgainAtTheEnd();
};

void StartUpTest::hooksRunInTheirOrder_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("hooks");
    QTest::newRow("check says yes") << QStringList() << words("check init start");
    QTest::newRow("check says no") << words("check=no") << words("check deploy init start");
}

void StartUpTest::hooksRunInTheirOrder()
{
    QFETCH(QStringList, given);
    QFETCH(QStringList, hooks);
    SubjectProcess subject(given);
    QVERIFY(subject.waitUntilReady());
    QCOMPARE(subject.notes(), hooks);
    QVERIFY(subject.isAnswering());
    QCOMPARE(subject.notes(), hooks);
}

void StartUpTest::aHookThatSaysNoIsNamedAndEndsTheProcess_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("hooks");
    QTest::newRow("deploy says no") << words("check=no deploy=no") << words("check deploy");
    QTest::newRow("init says no") << words("init=no") << words("check init");
    QTest::newRow("init says no after deploy")
        << words("check=no init=no") << words("check deploy init");
    QTest::newRow("start says no") << words("start=no") << words("check init start");
}

void StartUpTest::aHookThatSaysNoIsNamedAndEndsTheProcess()
{
    QFETCH(QStringList, given);
    QFETCH(QStringList, hooks);
    SubjectProcess subject(given);
    QCOMPARE(subject.waitForExit(), 1);
    QCOMPARE(subject.notes(), hooks);
    const QString line = onlyErrorLine(subject);
    QVERIFY2(line.startsWith(QStringLiteral("error: ")), qUtf8Printable(line));
    QVERIFY2(line.contains(hooks.last()), qUtf8Printable(line));
}

void StartUpTest::aHookThatThrowsEndsTheProcess_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("hooks");
    QTest::newRow("check throws") << words("check=throw") << words("check");
    QTest::newRow("deploy throws") << words("check=no deploy=throw") << words("check deploy");
    QTest::newRow("init throws") << words("init=throw") << words("check init");
    QTest::newRow("start throws") << words("start=throw") << words("check init start");
}

void StartUpTest::aHookThatThrowsEndsTheProcess()
{
    QFETCH(QStringList, given);
    QFETCH(QStringList, hooks);
    SubjectProcess subject(given);
    QCOMPARE(subject.waitForExit(), 1);
    QCOMPARE(subject.notes(), hooks);
    const QString line = onlyErrorLine(subject);
    QVERIFY2(line.endsWith(hooks.last() + QStringLiteral(" threw")), qUtf8Printable(line));
}

void StartUpTest::aNameThatIsTakenIsNamedAndNoHookRuns()
{
    const unit::BusClient squatter;
    QVERIFY(squatter.connection().registerService(SubjectProcess::serviceName()));
    SubjectProcess subject;
    QCOMPARE(subject.waitForExit(), 1);
    QCOMPARE(subject.notes(), QStringList());
    const QString line = onlyErrorLine(subject);
    QVERIFY2(line.contains(SubjectProcess::serviceName()), qUtf8Printable(line));
}

void StartUpTest::noHookRunsWhileAnotherProcessStartsTheModule_data()
{
    QTest::addColumn<QString>("hook");
    QTest::newRow("the other process checks its data") << QStringLiteral("check");
    QTest::newRow("the other process is about to appear") << QStringLiteral("start");
}

void StartUpTest::noHookRunsWhileAnotherProcessStartsTheModule()
{
    QFETCH(QString, hook);
    const QString directory = qEnvironmentVariable("ZEL_DATA_ROOT") + QStringLiteral("Subject");
    QVERIFY(QDir().mkpath(directory));
    SubjectProcess first({hook + QStringLiteral("=wait")});
    QVERIFY(first.waitForNote(hook));
    SubjectProcess second;
    QCOMPARE(second.waitForExit(), 1);
    QCOMPARE(second.notes(), QStringList());
    const QString line = onlyErrorLine(second);
    QVERIFY2(line.contains(directory), qUtf8Printable(line));
    first.goOn();
    QVERIFY(first.waitUntilReady());
    QVERIFY(first.isAnswering());
    QCOMPARE(first.notes(), words("check init start"));
}

void StartUpTest::aSignalDuringAHookEndsTheStartWithStatusZero_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("hooks");
    QTest::newRow("during check") << words("check=term") << words("check");
    QTest::newRow("during init") << words("init=term") << words("check init");
    QTest::newRow("during start") << words("start=term") << words("check init start");
}

void StartUpTest::aSignalDuringAHookEndsTheStartWithStatusZero()
{
    QFETCH(QStringList, given);
    QFETCH(QStringList, hooks);
    SubjectProcess subject(given);
    QCOMPARE(subject.waitForExit(), 0);
    QCOMPARE(subject.notes(), hooks);
    QCOMPARE(subject.log(), QStringList());
}

void StartUpTest::aBusThatIsNotThereIsNamedAndNoHookRuns()
{
    SubjectProcess subject({}, {QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent")});
    QCOMPARE(subject.waitForExit(), 1);
    QCOMPARE(subject.notes(), QStringList());
    const QString line = onlyErrorLine(subject);
    QVERIFY2(line.contains(QStringLiteral("bus")), qUtf8Printable(line));
}

void StartUpTest::whoeverSeesTheNameIsAnswered()
{
    QDBusServiceWatcher watcher(SubjectProcess::serviceName(), QDBusConnection::systemBus(),
                                QDBusServiceWatcher::WatchForRegistration);
    QDBusConnection::systemBus().interface()->call(QStringLiteral("GetId")); // it watches now
    SubjectProcess subject;
    QStringList answers;
    connect(&watcher, &QDBusServiceWatcher::serviceRegistered, this, [&subject, &answers] {
        answers.append(subject.isAnswering() ? QStringLiteral("operations") : QString());
        answers.append(
            subject.call(SubjectProcess::lifecycle(), QStringLiteral("presentationLoaded"))
                .errorName());
    });
    QVERIFY(QTest::qWaitFor([&] { return answers.size() == 2; }, 20000));
    QCOMPARE(answers, (QStringList{QStringLiteral("operations"), QString()}));
}

void StartUpTest::aModuleWithoutAnAdaptorAppearsWithItsLifecycle()
{
    SubjectProcess subject(words("mute"));
    QVERIFY(subject.waitUntilReady());
    QVERIFY(!subject.isAnswering());
    QCOMPARE(
        subject.call(SubjectProcess::lifecycle(), QStringLiteral("restoreDefault")).arguments(),
        QVariantList{true});
}

void StartUpTest::aStartUpThatGoesWellSaysNothing()
{
    SubjectProcess subject(words("check=no"));
    QVERIFY(subject.waitUntilReady());
    subject.sendSignal(SIGTERM);
    QCOMPARE(subject.waitForExit(), 0);
    QCOMPARE(subject.log(), QStringList());
}

void StartUpTest::theNameIsFreeAgainAtTheEnd()
{
    for (int round = 0; round < 2; ++round) {
        SubjectProcess subject;
        QVERIFY(subject.waitUntilReady());
        subject.sendSignal(SIGINT);
        QCOMPARE(subject.waitForExit(), 0);
        QVERIFY(!QDBusConnection::systemBus().interface()->isServiceRegistered(
            SubjectProcess::serviceName()));
    }
}

PROGKEYS_TEST_MAIN(StartUpTest)
#include "StartUpTest.moc"
