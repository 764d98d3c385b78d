#include <zelcore/ZELModule.h>

#include "support/LogCapture.h"
#include "support/PeerModule.h"
#include "support/TestMain.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusReply>

/// Something that no bus has a type for.
struct Unsendable
{
    int value = 0;
};
Q_DECLARE_METATYPE(Unsendable)

class RemoteCallTest : public QObject
{
    Q_OBJECT

private slots:
    void aCallReachesTheObjectOfThePeerByTheConventions();
    void argumentsArriveInTheirOrder();
    void theReplyIsReturnedWhole();
    void aStructureTravelsBothWays();
    void anErrorOfThePeerIsReturnedAsItIs();
    void aPeerThatIsNotThereIsAnError();
    void aNameThatIsNoneIsAnError_data();
    void aNameThatIsNoneIsAnError();
    void anArgumentThatTheBusDoesNotKnowIsAnErrorAndNoCall();
    void noEventLoopRunsDuringACall();

private:
    ZELModule m_module{QStringLiteral("Caller")};
};

void RemoteCallTest::aCallReachesTheObjectOfThePeerByTheConventions()
{
    unit::PeerModule peer(QStringLiteral("Peer"), unit::replyWith({}));
    const QDBusMessage reply =
        m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), {});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    const QList<QDBusMessage> calls = peer.takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().path(), QStringLiteral("/com/velmora/Tessaro/Peer"));
    QCOMPARE(calls.first().interface(), QStringLiteral("com.velmora.Tessaro.ZELInterface"));
    QCOMPARE(calls.first().member(), QStringLiteral("doIt"));
    QCOMPARE(calls.first().signature(), QString());
}

void RemoteCallTest::argumentsArriveInTheirOrder()
{
    unit::PeerModule peer(QStringLiteral("Peer"), unit::replyWith({}));
    const QList<QVariant> arguments{QStringLiteral("b"), 1, qlonglong{2}, false,
                                    QStringLiteral("a")};
    m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), arguments);
    const QList<QDBusMessage> calls = peer.takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().signature(), QStringLiteral("sixbs"));
    QCOMPARE(calls.first().arguments(), arguments);
}

void RemoteCallTest::theReplyIsReturnedWhole()
{
    const QList<QVariant> values{QStringLiteral("text"), 7};
    const unit::PeerModule peer(QStringLiteral("Peer"), unit::replyWith(values));
    const QDBusMessage reply =
        m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), {});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(reply.arguments(), values);
}

void RemoteCallTest::aStructureTravelsBothWays()
{
    const unit::PeerModule peer(QStringLiteral("Peer"), unit::echo());
    const Capability capability{QStringLiteral("c"), 7};
    const QDBusReply<Capability> reply = m_module.syncRemoteCall(
        QStringLiteral("Peer"), QStringLiteral("doIt"), {QVariant::fromValue(capability)});
    QVERIFY(reply.isValid());
    QVERIFY(reply.value() == capability);
}

void RemoteCallTest::anErrorOfThePeerIsReturnedAsItIs()
{
    const QString name = QStringLiteral("com.velmora.Tessaro.Error.UnknownSetting");
    const unit::PeerModule peer(QStringLiteral("Peer"),
                                unit::replyWithError(name, QStringLiteral("no such thing")));
    unit::LogCapture log(7);
    const QDBusMessage reply =
        m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), {});
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(reply.errorName(), name);
    QCOMPARE(reply.errorMessage(), QStringLiteral("no such thing"));
    QCOMPARE(log.take(), QStringList());
}

void RemoteCallTest::aPeerThatIsNotThereIsAnError()
{
    const QDBusMessage reply =
        m_module.syncRemoteCall(QStringLiteral("Nobody"), QStringLiteral("doIt"), {});
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(QDBusError(reply).type(), QDBusError::ServiceUnknown);
}

void RemoteCallTest::aNameThatIsNoneIsAnError_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("method");
    QTest::newRow("a module name with a blank") << QStringLiteral("No body") << QStringLiteral("m");
    QTest::newRow("an empty module name") << QString() << QStringLiteral("m");
    QTest::newRow("a method name with a blank") << QStringLiteral("Peer") << QStringLiteral("m n");
}

void RemoteCallTest::aNameThatIsNoneIsAnError()
{
    QFETCH(QString, name);
    QFETCH(QString, method);
    const unit::PeerModule peer(QStringLiteral("Peer"), unit::replyWith({}));
    QCOMPARE(m_module.syncRemoteCall(name, method, {}).type(), QDBusMessage::ErrorMessage);
}

void RemoteCallTest::anArgumentThatTheBusDoesNotKnowIsAnErrorAndNoCall()
{
    unit::PeerModule peer(QStringLiteral("Peer"), unit::replyWith({}));
    const QDBusMessage reply =
        m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"),
                                {QStringLiteral("a"), QVariant::fromValue(Unsendable())});
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(peer.takeCalls().size(), 0);
}

void RemoteCallTest::noEventLoopRunsDuringACall()
{
    const unit::PeerModule peer(QStringLiteral("Peer"), unit::replyWith({}));
    bool isLoopRunning = false;
    QMetaObject::invokeMethod(
        this, [&isLoopRunning] { isLoopRunning = true; }, Qt::QueuedConnection);
    m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), {});
    QVERIFY(!isLoopRunning);
    QVERIFY(QTest::qWaitFor([&] { return isLoopRunning; }));
}

PROGKEYS_TEST_MAIN(RemoteCallTest)
#include "RemoteCallTest.moc"
