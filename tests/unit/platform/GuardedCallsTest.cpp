#include "SubjectProcess.h"
#include "WireClient.h"
#include "support/TestMain.h"

#include <csignal>

namespace {

QStringList invocationFailed(const QString &message)
{
    return {QStringLiteral("error com.velmora.Tessaro.Error.InvocationFailed: ") + message};
}

const QStringList PlainReply{QStringLiteral("reply")};

} // namespace

/// Exceptions that leave a call.
class GuardedCallsTest : public QObject
{
    Q_OBJECT

private slots:
    void theCallerGetsExactlyOneErrorWithTheMessage_data();
    void theCallerGetsExactlyOneErrorWithTheMessage();
    void theExceptionIsLoggedOnce();
    void anExceptionOfNoModuleIsAnsweredToo();
    void laterCallsAreAnsweredAsBefore();
    void aCallerThatWantsNoReplyGetsNone();
    void anExceptionOfALifecycleHookIsAnswered_data();
    void anExceptionOfALifecycleHookIsAnswered();
    void theProcessStillEndsWithStatusZero();
    void manyExceptionsAreEachAnswered();
};

void GuardedCallsTest::theCallerGetsExactlyOneErrorWithTheMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("a message") << QStringLiteral("Adaptor::invokeMethod failed: getAction");
    QTest::newRow("an empty message") << QString();
    QTest::newRow("a message with placeholders") << QStringLiteral("%1 %2 %s");
    QTest::newRow("a message beyond ASCII") << QString::fromUtf8("Grüße 電話");
}

void GuardedCallsTest::theCallerGetsExactlyOneErrorWithTheMessage()
{
    QFETCH(QString, message);
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    QCOMPARE(client.answers(SubjectProcess::operations(), QStringLiteral("fail"), message),
             invocationFailed(message));
}

void GuardedCallsTest::theExceptionIsLoggedOnce()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    client.answers(SubjectProcess::operations(), QStringLiteral("fail"), QStringLiteral("why"));
    QCOMPARE(subject.log().size(), 1);
    const QString line = subject.log().first();
    QVERIFY(line.startsWith(QStringLiteral("error: ")));
    QVERIFY(line.contains(QStringLiteral("Subject")));
    QVERIFY(line.contains(QStringLiteral("4")));
    QVERIFY(line.endsWith(QStringLiteral("why")));
}

void GuardedCallsTest::anExceptionOfNoModuleIsAnsweredToo()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    QCOMPARE(client.answers(SubjectProcess::operations(), QStringLiteral("failNamelessly"),
                            QStringLiteral("why")),
             invocationFailed(QStringLiteral("why")));
    QCOMPARE(subject.log().size(), 1);
}

void GuardedCallsTest::laterCallsAreAnsweredAsBefore()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    WireClient other;
    const QString fail = QStringLiteral("fail");
    const QString echo = QStringLiteral("echo");
    for (int round = 0; round < 3; ++round) {
        const QString text = QString::number(round);
        QCOMPARE(client.answers(SubjectProcess::operations(), fail, text), invocationFailed(text));
        QCOMPARE(client.answers(SubjectProcess::operations(), echo, text), PlainReply);
        QCOMPARE(other.answers(SubjectProcess::operations(), echo, text), PlainReply);
        QCOMPARE(other.answers(SubjectProcess::operations(), fail, text), invocationFailed(text));
    }
    QVERIFY(subject.isAnswering());
    QCOMPARE(subject.log().size(), 6);
}

void GuardedCallsTest::aCallerThatWantsNoReplyGetsNone()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    QCOMPARE(client.answers(SubjectProcess::operations(), QStringLiteral("fail"),
                            QStringLiteral("unheard"), false),
             QStringList());
    QCOMPARE(subject.log().size(), 1);
    QCOMPARE(client.answers(SubjectProcess::operations(), QStringLiteral("fail"),
                            QStringLiteral("heard")),
             invocationFailed(QStringLiteral("heard")));
    QVERIFY(subject.isAnswering());
}

void GuardedCallsTest::anExceptionOfALifecycleHookIsAnswered_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("hook");
    for (const char *method : {"restoreDefault", "restoreFactory", "preSaveForSaveRestore",
                               "postRestoreForSaveRestore", "stop"})
        QTest::newRow(method) << QString::fromLatin1(method) << QString::fromLatin1(method);
    QTest::newRow("presentationLoaded")
        << QStringLiteral("presentationLoaded") << QStringLiteral("presentation_loaded");
    QTest::newRow("presentationStop")
        << QStringLiteral("presentationStop") << QStringLiteral("presentation_stop");
}

void GuardedCallsTest::anExceptionOfALifecycleHookIsAnswered()
{
    QFETCH(QString, method);
    QFETCH(QString, hook);
    SubjectProcess subject({hook + QStringLiteral("=throw")});
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    QCOMPARE(client.answers(SubjectProcess::lifecycle(), method),
             invocationFailed(hook + QStringLiteral(" threw")));
    QCOMPARE(subject.log().size(), 1);
    QVERIFY(subject.isAnswering());
}

void GuardedCallsTest::theProcessStillEndsWithStatusZero()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient().answers(SubjectProcess::operations(), QStringLiteral("fail"), QString());
    subject.sendSignal(SIGTERM);
    QCOMPARE(subject.waitForExit(), 0);
}

void GuardedCallsTest::manyExceptionsAreEachAnswered()
{
    SubjectProcess subject;
    QVERIFY(subject.waitUntilReady());
    WireClient client;
    for (int number = 0; number < 100; ++number) {
        const QString text = QString::number(number);
        QCOMPARE(client.answers(SubjectProcess::operations(), QStringLiteral("fail"), text),
                 invocationFailed(text));
    }
    QCOMPARE(subject.log().size(), 100);
}

PROGKEYS_TEST_MAIN(GuardedCallsTest)
#include "GuardedCallsTest.moc"
