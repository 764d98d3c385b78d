#include <zelcore/ZELModule.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

/// A module while no bus can be reached.
class NoBusTest : public QObject
{
    Q_OBJECT

public slots:
    void receive(const ZELEvent & /*event*/) {}

private slots:
    void initTestCase() { unit::loseTheBus(); }

    void anEventCannotBeSent();
    void anEventCannotBeSubscribedToAndTheLogNamesIt();
    void aCallIsAnsweredByAnErrorAtOnce();
};

void NoBusTest::anEventCannotBeSent()
{
    ZELModule module(QStringLiteral("Some"));
    ZELEvent event;
    event.setEvtName(QStringLiteral("SOME_NTF"));
    QVERIFY(!module.notifyEvent(event));
}

void NoBusTest::anEventCannotBeSubscribedToAndTheLogNamesIt()
{
    ZELModule module(QStringLiteral("Some"));
    unit::LogCapture log(3);
    QVERIFY(!module.subscribeEvent(QStringLiteral("SOME_EVENT"), this, SLOT(receive(ZELEvent))));
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QStringLiteral("error: ")));
    QVERIFY(lines.first().contains(QStringLiteral("SOME_EVENT")));
    QCOMPARE(module.children().size(), 0);
}

void NoBusTest::aCallIsAnsweredByAnErrorAtOnce()
{
    ZELModule module(QStringLiteral("Some"));
    const QDBusMessage reply =
        module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), {});
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
}

PROGKEYS_TEST_MAIN(NoBusTest)
#include "NoBusTest.moc"
