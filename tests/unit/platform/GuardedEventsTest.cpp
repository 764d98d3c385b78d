#include "SubjectProcess.h"
#include "support/EventRecorder.h"
#include "support/TestMain.h"

#include <zelcore/ZELModule.h>

#include <csignal>

/// Exceptions that leave the slot of an event.
class GuardedEventsTest : public QObject
{
    Q_OBJECT

private slots:
    void theExceptionIsLoggedOnceAndTheNextEventIsAnswered();
    void theProcessStillEndsWithStatusZero();

private:
    /// Sends the subject an event that it answers, or that makes it throw this message.
    void send(const QString &thrown = QString());

    ZELModule m_module{QStringLiteral("Sender")};
};

void GuardedEventsTest::send(const QString &thrown)
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("SUBJECT_EVENT"));
    if (!thrown.isNull())
        event.addArgument(thrown, QStringLiteral("throw"), true);
    QVERIFY(m_module.notifyEvent(event));
}

void GuardedEventsTest::theExceptionIsLoggedOnceAndTheNextEventIsAnswered()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    unit::EventRecorder recorder;
    QStringList names;
    const QString answer = QStringLiteral("SUBJECT_ANSWER");
    const auto answers = [&recorder, &names, answer] {
        return (names += recorder.takeNames()).count(answer);
    };
    send(QStringLiteral("why"));
    send();
    send(QStringLiteral("why not"));
    send();
    QVERIFY(QTest::qWaitFor([&] { return answers() == 2; }));
    const QStringList lines = subject.log();
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.first().startsWith(QStringLiteral("error: ")));
    QVERIFY(lines.first().endsWith(QStringLiteral("why")));
    QVERIFY(lines.last().endsWith(QStringLiteral("why not")));
    QVERIFY(subject.isAnswering());
    QCOMPARE(answers(), 2);
}

void GuardedEventsTest::theProcessStillEndsWithStatusZero()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    send(QStringLiteral("why"));
    QVERIFY(QTest::qWaitFor([&] { return subject.log().size() == 1; }));
    subject.sendSignal(SIGTERM);
    QCOMPARE(subject.waitForExit(), 0);
}

PROGKEYS_TEST_MAIN(GuardedEventsTest)
#include "GuardedEventsTest.moc"
