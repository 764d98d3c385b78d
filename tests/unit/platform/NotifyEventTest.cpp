#include <zelcore/ZELModule.h>

#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <QDBusArgument>

/// Something that no bus has a type for.
struct Unsendable
{
    int value = 0;
};
Q_DECLARE_METATYPE(Unsendable)

/// Events as they leave a module.
class NotifyEventTest : public QObject
{
    Q_OBJECT

private slots:
    void anEventIsASignalFromTheObjectOfItsModule();
    void argumentsTravelInOrderEachWithItsFlag();
    void aStructureTravelsAsOne();
    void aValueThatTheBusDoesNotKnowIsRefused_data();
    void aValueThatTheBusDoesNotKnowIsRefused();

private:
    ZELModule m_module{QStringLiteral("Some")};
};

void NotifyEventTest::anEventIsASignalFromTheObjectOfItsModule()
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("SOME_NTF"));
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    QVERIFY(m_module.notifyEvent(event));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(recorder.takeNames(), QStringList{QStringLiteral("SOME_NTF")});
    const QDBusMessage signal = recorder.messages().first();
    QCOMPARE(signal.path(), QStringLiteral("/com/velmora/Tessaro/Some"));
    QCOMPARE(signal.interface(), QStringLiteral("com.velmora.Tessaro.ZELEvents"));
    QCOMPARE(signal.member(), QStringLiteral("event"));
    QCOMPARE(signal.signature(), QStringLiteral("sa(svb)"));
}

void NotifyEventTest::argumentsTravelInOrderEachWithItsFlag()
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("SOME_NTF"));
    event.addArgument(qlonglong{1} << 40, QStringLiteral("z"), true);
    event.addArgument(QString::fromUtf8("電話"), QStringLiteral("a"), false);
    event.addArgument(-5, QString(), true);
    event.addArgument(true, QStringLiteral("a"), true);
    unit::EventRecorder recorder;
    QVERIFY(m_module.notifyEvent(event));
    const QList<ZELEvent> sent = recorder.take();
    QCOMPARE(sent.size(), 1);
    QCOMPARE(unit::describe(sent.first()), unit::describe(event));
}

void NotifyEventTest::aStructureTravelsAsOne()
{
    const Capability capability{QStringLiteral("c"), 7};
    ZELEvent event;
    event.addArgument(QVariant::fromValue(capability), QStringLiteral("what"), true);
    unit::EventRecorder recorder;
    QVERIFY(m_module.notifyEvent(event));
    const QList<ZELEvent> sent = recorder.take();
    QCOMPARE(sent.size(), 1);
    const QVariant received = sent.first().getArgument(QStringLiteral("what"));
    QCOMPARE(received.value<QDBusArgument>().currentSignature(), QStringLiteral("(si)"));
    QVERIFY(qdbus_cast<Capability>(received) == capability);
}

void NotifyEventTest::aValueThatTheBusDoesNotKnowIsRefused_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("a type that is not registered") << QVariant::fromValue(Unsendable());
    QTest::newRow("no value at all") << QVariant();
}

void NotifyEventTest::aValueThatTheBusDoesNotKnowIsRefused()
{
    QFETCH(QVariant, value);
    ZELEvent event;
    event.setEvtName(QStringLiteral("REFUSED"));
    event.addArgument(1, QStringLiteral("before"), true);
    event.addArgument(value, QStringLiteral("what"), true);
    event.addArgument(1, QStringLiteral("after"), true);
    unit::EventRecorder recorder;
    QVERIFY(!m_module.notifyEvent(event));
    QCOMPARE(recorder.takeNames(), QStringList());
}

PROGKEYS_TEST_MAIN(NotifyEventTest)
#include "NotifyEventTest.moc"
