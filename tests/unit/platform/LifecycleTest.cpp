#include "SubjectProcess.h"
#include "support/TestMain.h"

#include <csignal>

/// Hooks that run on request, and the end.
class LifecycleTest : public QObject
{
    Q_OBJECT

private slots:
    void aMethodRunsItsHookAndReturnsItsAnswer_data();
    void aMethodRunsItsHookAndReturnsItsAnswer();
    void aPresentationMethodRunsItsHookAndReturnsNothing_data();
    void aPresentationMethodRunsItsHookAndReturnsNothing();
    void stopIsAnsweredAndEndsTheProcessWithStatusZero_data();
    void stopIsAnsweredAndEndsTheProcessWithStatusZero();
    void aSignalEndsTheProcessWithStatusZeroWithoutAHook_data();
    void aSignalEndsTheProcessWithStatusZeroWithoutAHook();
    void theHooksOfTheStartCannotBeCalled();
};

void LifecycleTest::aMethodRunsItsHookAndReturnsItsAnswer_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<bool>("answer");
    for (const char *method : {"restoreDefault", "restoreFactory", "preSaveForSaveRestore",
                               "postRestoreForSaveRestore"}) {
        QTest::addRow("%s says yes", method) << QString::fromLatin1(method) << true;
        QTest::addRow("%s says no", method) << QString::fromLatin1(method) << false;
    }
}

void LifecycleTest::aMethodRunsItsHookAndReturnsItsAnswer()
{
    QFETCH(QString, method);
    QFETCH(bool, answer);
    SubjectProcess subject(answer ? QStringList() : QStringList{method + QStringLiteral("=no")});
    QVERIFY(subject.waitUntilReady());
    const QStringList before = subject.notes();
    for (int round = 1; round <= 2; ++round) {
        const QDBusMessage reply = subject.call(SubjectProcess::lifecycle(), method);
        QCOMPARE(reply.signature(), QStringLiteral("b"));
        QCOMPARE(reply.arguments(), QVariantList{answer});
        QCOMPARE(subject.notes().mid(before.size()).count(method), round);
    }
    QCOMPARE(subject.notes().size(), before.size() + 2);
    QVERIFY(subject.isAnswering());
}

void LifecycleTest::aPresentationMethodRunsItsHookAndReturnsNothing_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("hook");
    QTest::newRow("presentationLoaded")
        << QStringLiteral("presentationLoaded") << QStringLiteral("presentation_loaded");
    QTest::newRow("presentationStop")
        << QStringLiteral("presentationStop") << QStringLiteral("presentation_stop");
}

void LifecycleTest::aPresentationMethodRunsItsHookAndReturnsNothing()
{
    QFETCH(QString, method);
    QFETCH(QString, hook);
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    const QDBusMessage reply = subject.call(SubjectProcess::lifecycle(), method);
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(reply.arguments(), QVariantList());
    QCOMPARE(subject.notes().last(), hook);
}

void LifecycleTest::stopIsAnsweredAndEndsTheProcessWithStatusZero_data()
{
    QTest::addColumn<bool>("answer");
    QTest::newRow("stop says yes") << true;
    QTest::newRow("stop says no") << false;
}

void LifecycleTest::stopIsAnsweredAndEndsTheProcessWithStatusZero()
{
    QFETCH(bool, answer);
    SubjectProcess subject(answer ? QStringList() : QStringList{QStringLiteral("stop=no")});
    QVERIFY(subject.waitUntilReady());
    QCOMPARE(subject.call(SubjectProcess::lifecycle(), QStringLiteral("stop")).arguments(),
             QVariantList{answer});
    QCOMPARE(subject.waitForExit(), 0);
    QCOMPARE(subject.notes().last(), QStringLiteral("stop"));
    QCOMPARE(subject.log(), QStringList());
}

void LifecycleTest::aSignalEndsTheProcessWithStatusZeroWithoutAHook_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void LifecycleTest::aSignalEndsTheProcessWithStatusZeroWithoutAHook()
{
    QFETCH(int, number);
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    const QStringList before = subject.notes();
    subject.sendSignal(number);
    QCOMPARE(subject.waitForExit(), 0);
    QCOMPARE(subject.notes(), before);
    QCOMPARE(subject.log(), QStringList());
}

void LifecycleTest::theHooksOfTheStartCannotBeCalled()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    const QStringList before = subject.notes();
    for (const char *hook : {"check", "deploy", "init", "start"}) {
        for (const QString &interface : {SubjectProcess::lifecycle(), SubjectProcess::operations()})
            QCOMPARE(subject.call(interface, QLatin1String(hook)).type(),
                     QDBusMessage::ErrorMessage);
    }
    QCOMPARE(subject.notes(), before);
}

PROGKEYS_TEST_MAIN(LifecycleTest)
#include "LifecycleTest.moc"
