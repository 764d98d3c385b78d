#include <zelcore/ZELModule.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <QDBusArgument>

#include <limits>

namespace {

/// Keeps the last event that came.
class Receiver : public QObject
{
    Q_OBJECT

public:
    ZELEvent last;
    int count = 0;

public slots:
    void receive(const ZELEvent &event)
    {
        last = event;
        ++count;
    }
};

} // namespace

/// Events from one module to another, over the bus.
class EventRoundTripTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aPlainValueComesAsItWasSent_data();
    void aPlainValueComesAsItWasSent();
    void aStructureComesToBeReadAsOne();
    void listsAndMapsCome();
    void argumentsKeepOrderNamesAndFlags();
    void anEventWithoutArgumentsComesWithoutAny();
    void aThousandArgumentsCome();

private:
    /// Sends the event and returns what came.
    ZELEvent sent(const ZELEvent &event);
    QVariant sent(const QVariant &value);

    ZELModule m_sender{QStringLiteral("Sender")};
    ZELModule m_subscriber{QStringLiteral("Subscriber")};
    Receiver m_receiver;
};

void EventRoundTripTest::initTestCase()
{
    QVERIFY(
        m_subscriber.subscribeEvent(QStringLiteral("TRIP"), &m_receiver, SLOT(receive(ZELEvent))));
}

ZELEvent EventRoundTripTest::sent(const ZELEvent &event)
{
    ZELEvent named = event;
    named.setEvtName(QStringLiteral("TRIP"));
    const int before = m_receiver.count;
    if (!m_sender.notifyEvent(named) ||
        !QTest::qWaitFor([this, before] { return m_receiver.count > before; }, 10000))
        qFatal("The event did not come");
    return m_receiver.last;
}

QVariant EventRoundTripTest::sent(const QVariant &value)
{
    ZELEvent event;
    event.addArgument(value, QStringLiteral("value"), true);
    return sent(event).getArgument(QStringLiteral("value"));
}

void EventRoundTripTest::aPlainValueComesAsItWasSent_data()
{
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char *name, const QVariant &value) { QTest::newRow(name) << value; };
    row("a number", 5);
    row("the least number", std::numeric_limits<int>::min());
    row("the greatest wide number", std::numeric_limits<qlonglong>::max());
    row("a number without a sign", 4294967295U);
    row("a wide number without a sign", std::numeric_limits<qulonglong>::max());
    row("a fraction", 0.1);
    row("a truth", true);
    row("a falsehood", false);
    row("a text", QString::fromUtf8("Grüße 電話 \U0001F4DE"));
    row("an empty text", QStringLiteral(""));
    row("texts", QStringList{QStringLiteral("a"), QString()});
    row("bytes", QByteArray("\0\xff", 2));
    row("a mebibyte of text", QString(1 << 20, QLatin1Char('x')));
}

void EventRoundTripTest::aPlainValueComesAsItWasSent()
{
    QFETCH(QVariant, value);
    const QVariant received = sent(value);
    QCOMPARE(received.userType(), value.userType());
    QCOMPARE(received, value);
}

void EventRoundTripTest::aStructureComesToBeReadAsOne()
{
    const Capability capability{QStringLiteral("c"), -7};
    const QVariant received = sent(QVariant::fromValue(capability));
    QVERIFY(qdbus_cast<Capability>(received) == capability);
}

void EventRoundTripTest::listsAndMapsCome()
{
    const QMapIntInt numbers{{1, 2}, {-3, 4}};
    QCOMPARE(qdbus_cast<QMapIntInt>(sent(QVariant::fromValue(numbers))), numbers);
    const MapQStringCapability capabilities{{QStringLiteral("a"), {QStringLiteral("b"), 1}}};
    QVERIFY(qdbus_cast<MapQStringCapability>(sent(QVariant::fromValue(capabilities))) ==
            capabilities);
    const QVariantList mixed{1, QStringLiteral("two")};
    QCOMPARE(qdbus_cast<QVariantList>(sent(QVariant(mixed))), mixed);
}

void EventRoundTripTest::argumentsKeepOrderNamesAndFlags()
{
    ZELEvent event;
    event.addArgument(1, QStringLiteral("b"), false);
    event.addArgument(2, QStringLiteral("a"), true);
    event.addArgument(3, QStringLiteral("a"), false);
    const ZELEvent received = sent(event);
    QCOMPARE(received.getArguments().size(), 3);
    for (int index = 0; index < 3; ++index) {
        const ZELEvent::Argument &expected = event.getArguments().at(index);
        const ZELEvent::Argument &argument = received.getArguments().at(index);
        QCOMPARE(argument.name, expected.name);
        QCOMPARE(argument.value, expected.value);
        QCOMPARE(argument.flag, expected.flag);
    }
    QCOMPARE(received.getArgument(QStringLiteral("a")), QVariant(2));
}

void EventRoundTripTest::anEventWithoutArgumentsComesWithoutAny()
{
    const ZELEvent received = sent(ZELEvent());
    QCOMPARE(received.getEvtName(), QStringLiteral("TRIP"));
    QCOMPARE(received.getArguments().size(), 0);
}

void EventRoundTripTest::aThousandArgumentsCome()
{
    ZELEvent event;
    for (int number = 0; number < 1000; ++number)
        event.addArgument(number, QString::number(number), true);
    const ZELEvent received = sent(event);
    QCOMPARE(received.getArguments().size(), 1000);
    QCOMPARE(received.getArgument(QStringLiteral("999")), QVariant(999));
}

PROGKEYS_TEST_MAIN(EventRoundTripTest)
#include "EventRoundTripTest.moc"
