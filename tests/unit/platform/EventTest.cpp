#include <zelcore/ZELEventCodec.h>
#include <zelcore/ZELModule.h>

#include "support/Echo.h"
#include "support/TestProgram.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <limits>

namespace {

/// A type without a D-Bus signature.
struct Unsendable
{
    int value = 0;
};

ZELEvent eventWith(const QVariant &value)
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("SOME_NTF"));
    event.addArgument(value, QStringLiteral("what"), true);
    return event;
}

} // namespace
Q_DECLARE_METATYPE(Unsendable)

/// Events, and their marshalling and demarshalling.
class EventTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        registerZELTypes();
        m_echo = std::make_unique<unit::Echo>();
    }

    void cleanupTestCase() { m_echo.reset(); }

    void anArgumentIsFoundByItsExactName()
    {
        ZELEvent event;
        event.addArgument(1, QStringLiteral("addr"), true);
        event.addArgument(2, QStringLiteral("Addr"), true);
        event.addArgument(3, QStringLiteral("addr"), true);
        QCOMPARE(event.getArgument(QStringLiteral("Addr")), QVariant(2));
        QCOMPARE(event.getArgument(QStringLiteral("addr")), QVariant(1));
        QVERIFY(!event.getArgument(QStringLiteral("addr ")).isValid());
        QVERIFY(!event.getArgument(QString()).isValid());
    }

    void anEventIsASignalOfTheEventsInterface()
    {
        const auto message = zel::encodeEvent(QStringLiteral("/path"), eventWith(1));
        QVERIFY(message);
        QCOMPARE(message->path(), QStringLiteral("/path"));
        QCOMPARE(message->interface(), QStringLiteral("com.velmora.Tessaro.ZELEvents"));
        QCOMPARE(message->member(), QStringLiteral("event"));
    }

    void argumentsKeepOrderNamesAndFlags()
    {
        ZELEvent event;
        event.setEvtName(QStringLiteral("SOME_NTF"));
        event.addArgument(1, QStringLiteral("b"), false);
        event.addArgument(2, QStringLiteral("a"), true);
        event.addArgument(3, QStringLiteral("a"), false);
        const auto received = sent(event);
        QVERIFY(received);
        QCOMPARE(m_echo->signature(), QStringLiteral("sa(svb)"));
        QCOMPARE(received->getEvtName(), event.getEvtName());
        QCOMPARE(received->getArguments().size(), 3);
        for (int index = 0; index < 3; ++index) {
            const ZELEvent::Argument &expected = event.getArguments().at(index);
            const ZELEvent::Argument &argument = received->getArguments().at(index);
            QCOMPARE(argument.name, expected.name);
            QCOMPARE(argument.value, expected.value);
            QCOMPARE(argument.flag, expected.flag);
        }
    }

    void aValueOfABusTypeIsReceivedUnchanged_data()
    {
        QTest::addColumn<QVariant>("value");
        const auto row = [](const char *name, const QVariant &value) {
            QTest::newRow(name) << value;
        };
        row("the smallest 32-bit number", std::numeric_limits<int>::min());
        row("the largest 64-bit number", std::numeric_limits<qlonglong>::max());
        row("the largest unsigned number", std::numeric_limits<qulonglong>::max());
        row("a fraction", 0.1);
        row("false", false);
        row("a text with non-ASCII characters", QString::fromUtf8("Grüße 電話 \U0001F4DE"));
        row("an empty text", QStringLiteral(""));
        row("a list of texts", QStringList{QStringLiteral("a"), QString()});
        row("bytes", QByteArray("\0\xff", 2));
    }

    void aValueOfABusTypeIsReceivedUnchanged()
    {
        QFETCH(QVariant, value);
        const auto received = sent(eventWith(value));
        QVERIFY(received);
        const QVariant found = received->getArgument(QStringLiteral("what"));
        QCOMPARE(found.userType(), value.userType());
        QCOMPARE(found, value);
    }

    void aStructureIsReceivedUnchanged()
    {
        const Capability capability{QStringLiteral("c"), -7};
        const auto received = sent(eventWith(QVariant::fromValue(capability)));
        QVERIFY(received);
        QVERIFY(qdbus_cast<Capability>(received->getArgument(QStringLiteral("what"))) ==
                capability);
    }

    void aNestedValueIsSentIfAllItsPartsHaveABusType_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("isSent");
        const auto rows = [](const char *of, const QVariant &value, bool isSent) {
            QTest::addRow("%s itself", of) << value << isSent;
            QTest::addRow("%s in a list", of) << QVariant(QVariantList{1, value}) << isSent;
            QTest::addRow("%s in a map", of)
                << QVariant(QVariantMap{{QStringLiteral("k"), value}}) << isSent;
            QTest::addRow("%s in a variant", of)
                << QVariant::fromValue(QDBusVariant(value)) << isSent;
            QTest::addRow("%s in a list in a list", of)
                << QVariant(QVariantList{QVariantList{value}}) << isSent;
        };
        rows("a known type", QVariant::fromValue(Capability()), true);
        rows("an unknown type", QVariant::fromValue(Unsendable()), false);
        rows("no value", QVariant(), false);
    }

    void aNestedValueIsSentIfAllItsPartsHaveABusType()
    {
        QFETCH(QVariant, value);
        QFETCH(bool, isSent);
        ZELEvent event = eventWith(value);
        event.addArgument(1, QStringLiteral("after"), true);
        QCOMPARE(zel::encodeEvent(QStringLiteral("/"), event).has_value(), isSent);
        if (isSent)
            QVERIFY(sent(event));
    }

    void aMessageWithAnotherSignatureIsNotAnEvent_data()
    {
        QTest::addColumn<QVariantList>("values");
        const QVariant name = QStringLiteral("SOME_NTF");
        const QMapIntInt numbers{{1, 2}};
        QTest::newRow("no values") << QVariantList();
        QTest::newRow("only the name") << QVariantList{name};
        QTest::newRow("a list of texts instead of the arguments")
            << QVariantList{name, QStringList{QStringLiteral("a")}};
        QTest::newRow("a map instead of the arguments")
            << QVariantList{name, QVariant::fromValue(numbers)};
        QTest::newRow("a structure instead of the arguments")
            << QVariantList{name, QVariant::fromValue(Capability())};
    }

    void aMessageWithAnotherSignatureIsNotAnEvent()
    {
        QFETCH(QVariantList, values);
        QVERIFY(!zel::decodeEvent(m_echo->send(values)));
    }

private:
    /// Sends the event and returns it as received.
    std::optional<ZELEvent> sent(const ZELEvent &event)
    {
        const auto message = zel::encodeEvent(QStringLiteral("/"), event);
        return message ? zel::decodeEvent(m_echo->send(message->arguments())) : std::nullopt;
    }

    std::unique_ptr<unit::Echo> m_echo;
};

PROGKEYS_TEST(EventTest)
#include "EventTest.moc"
