#include <zelcore/ZELModule.h>

#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <QDBusVariant>

#include <memory>

namespace {

/// Keeps the events that come.
class Receiver : public QObject
{
    Q_OBJECT

public:
    QList<ZELEvent> events;

public slots:
    void receive(const ZELEvent &event) { events.append(event); }
    void receiveText(const QString & /*text*/) { events.append(ZELEvent()); }
    void receiveMore(const ZELEvent &event, int /*more*/) { events.append(event); }

private slots:
    void receivePrivately(const ZELEvent &event) { events.append(event); }
};

const QString Name = QStringLiteral("SOME_EVENT");
const QString Fence = QStringLiteral("FENCE_EVENT");

} // namespace

/// Events as they reach a module.
class SubscribeEventTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aSlotThatIsNotThereIsRefusedAndNamed_data();
    void aSlotThatIsNotThereIsRefusedAndNamed();
    void aPrivateSlotIsCalledToo();
    void anEventCallsTheSlotOnceFromWhateverObjectItComes();
    void anEventOfAnotherNameCallsNothing();
    void everySubscriberIsCalled();
    void aReceiverThatIsGoneIsNotCalled();
    void eventsComeInTheirOrder();
    void aMalformedEventIsWarnedOfAndDroppedAndTheNextOneComes_data();
    void aMalformedEventIsWarnedOfAndDroppedAndTheNextOneComes();

private:
    void send(const QList<QVariant> &arguments);
    void sendWellFormed(const QString &name);
    void waitForFence();

    std::unique_ptr<ZELModule> m_module;
    std::unique_ptr<Receiver> m_receiver;
    std::unique_ptr<Receiver> m_fence;
    std::unique_ptr<unit::BusClient> m_peer;
};

void SubscribeEventTest::init()
{
    m_module = std::make_unique<ZELModule>(QStringLiteral("Some"));
    m_receiver = std::make_unique<Receiver>();
    m_fence = std::make_unique<Receiver>();
    m_peer = std::make_unique<unit::BusClient>();
    QVERIFY(m_module->subscribeEvent(Fence, m_fence.get(), SLOT(receive(ZELEvent))));
}

void SubscribeEventTest::cleanup()
{
    m_module.reset();
    m_peer.reset();
}

void SubscribeEventTest::send(const QList<QVariant> &arguments)
{
    unit::sendSignal(m_peer->connection(), arguments);
}

void SubscribeEventTest::sendWellFormed(const QString &name)
{
    ZELModule peer(QStringLiteral("Peer"));
    ZELEvent event;
    event.setEvtName(name);
    QVERIFY(peer.notifyEvent(event));
}

// What this process and the peer sent before has been handled when the fence has come.
void SubscribeEventTest::waitForFence()
{
    m_peer->settle();
    const auto seen = m_fence->events.size();
    sendWellFormed(Fence);
    QVERIFY(QTest::qWaitFor([&] { return m_fence->events.size() == seen + 1; }));
}

void SubscribeEventTest::aSlotThatIsNotThereIsRefusedAndNamed_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("a name that is not there") << QByteArray(SLOT(missing(ZELEvent)));
    QTest::newRow("other arguments") << QByteArray(SLOT(receive(QString)));
    QTest::newRow("a slot that takes something else") << QByteArray(SLOT(receiveText(QString)));
    QTest::newRow("a slot that takes more") << QByteArray(SLOT(receiveMore(ZELEvent, int)));
    QTest::newRow("no slot code before it") << QByteArray("receive(ZELEvent)");
    QTest::newRow("an empty text") << QByteArray("");
}

void SubscribeEventTest::aSlotThatIsNotThereIsRefusedAndNamed()
{
    QFETCH(QByteArray, slot);
    unit::LogCapture log(3);
    QVERIFY(!m_module->subscribeEvent(Name, m_receiver.get(), slot.constData()));
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QStringLiteral("error: ")));
    QVERIFY(lines.first().contains(Name));
    QVERIFY(lines.first().contains(QString::fromLatin1(slot)));
    QVERIFY(!m_module->subscribeEvent(Name, nullptr, SLOT(receive(ZELEvent))));
    sendWellFormed(Name);
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 0);
}

void SubscribeEventTest::aPrivateSlotIsCalledToo()
{
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receivePrivately(ZELEvent))));
    sendWellFormed(Name);
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 1);
}

void SubscribeEventTest::anEventCallsTheSlotOnceFromWhateverObjectItComes()
{
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receive(ZELEvent))));
    waitForFence();
    sendWellFormed(Name);
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 1);
    QCOMPARE(m_receiver->events.first().getEvtName(), Name);
    QVERIFY(m_module->notifyEvent(m_receiver->events.first()));
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 2);
}

void SubscribeEventTest::anEventOfAnotherNameCallsNothing()
{
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receive(ZELEvent))));
    sendWellFormed(QStringLiteral("SOME_EVENT_MORE"));
    sendWellFormed(QStringLiteral("some_event"));
    sendWellFormed(QString());
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 0);
}

void SubscribeEventTest::everySubscriberIsCalled()
{
    Receiver second;
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receive(ZELEvent))));
    QVERIFY(m_module->subscribeEvent(Name, &second, SLOT(receive(ZELEvent))));
    sendWellFormed(Name);
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 1);
    QCOMPARE(second.events.size(), 1);
}

void SubscribeEventTest::aReceiverThatIsGoneIsNotCalled()
{
    Receiver other;
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receive(ZELEvent))));
    QVERIFY(m_module->subscribeEvent(Name, &other, SLOT(receive(ZELEvent))));
    m_receiver.reset();
    sendWellFormed(Name);
    waitForFence();
    QCOMPARE(other.events.size(), 1);
}

void SubscribeEventTest::eventsComeInTheirOrder()
{
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receive(ZELEvent))));
    ZELModule peer(QStringLiteral("Peer"));
    for (int number = 0; number < 100; ++number) {
        ZELEvent event;
        event.setEvtName(Name);
        event.addArgument(number, QStringLiteral("number"), true);
        QVERIFY(peer.notifyEvent(event));
    }
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 100);
    for (int number = 0; number < 100; ++number)
        QCOMPARE(m_receiver->events.at(number).getArgument(QStringLiteral("number")),
                 QVariant(number));
}

void SubscribeEventTest::aMalformedEventIsWarnedOfAndDroppedAndTheNextOneComes_data()
{
    QTest::addColumn<QList<QVariant>>("body");
    QTest::addColumn<QString>("signature");
    const auto row = [](const char *name, const QList<QVariant> &body, const char *signature) {
        QTest::newRow(name) << (QList<QVariant>{Name} + body) << QString::fromLatin1(signature);
    };
    row("the name alone", {}, "s");
    row("a text for the arguments", {QStringLiteral("a")}, "ss");
    row("a list of texts for the arguments", {QStringList{QStringLiteral("a")}}, "sas");
    row("arguments of another shape", {QVariant::fromValue(QMapIntInt{{1, 2}})}, "sa{ii}");
    row("a variant for the arguments", {QVariant::fromValue(QDBusVariant(1))}, "sv");
    row("one structure for the arguments", {QVariant::fromValue(Capability())}, "s(si)");
}

void SubscribeEventTest::aMalformedEventIsWarnedOfAndDroppedAndTheNextOneComes()
{
    QFETCH(QList<QVariant>, body);
    QFETCH(QString, signature);
    QVERIFY(m_module->subscribeEvent(Name, m_receiver.get(), SLOT(receive(ZELEvent))));
    waitForFence();
    unit::LogCapture log(4);
    send(body);
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 0);
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QStringLiteral("warning: ")));
    QVERIFY(lines.first().contains(Name));
    QVERIFY(lines.first().contains(m_peer->connection().baseService()));
    QVERIFY(lines.first().contains(QStringLiteral("\"%1\"").arg(signature)));
    sendWellFormed(Name);
    waitForFence();
    QCOMPARE(m_receiver->events.size(), 1);
}

PROGKEYS_TEST_MAIN(SubscribeEventTest)
#include "SubscribeEventTest.moc"
