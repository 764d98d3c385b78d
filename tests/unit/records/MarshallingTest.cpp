#include "records/Capability.h"
#include "support/PeerModule.h"
#include "support/Samples.h"
#include "support/TestMain.h"

#include <QDBusArgument>
#include <QDBusMessage>

#include <limits>

namespace {

/// A value's way through the bus: a peer receives it and sends it back.
class Echo
{
public:
    Echo() : m_peer(QStringLiteral("Echo"), unit::echo()) {}

    QVariant operator()(const QVariant &value)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("com.velmora.Tessaro.Echo"), QStringLiteral("/com/velmora/Tessaro/Echo"),
            QStringLiteral("unit.Echo"), QStringLiteral("echo"));
        call << value;
        const QDBusMessage reply = QDBusConnection::systemBus().call(call);
        const QList<QDBusMessage> received = m_peer.takeCalls();
        m_signature = received.isEmpty() ? QString() : received.last().signature();
        return reply.arguments().value(0);
    }

    /// What the peer saw of the last value.
    QString signature() const { return m_signature; }

private:
    unit::PeerModule m_peer;
    QString m_signature;
};

/// The members of a structure as they stand on the wire.
QVariantList members(const QVariant &structure)
{
    const auto in = structure.value<QDBusArgument>();
    QVariantList values;
    in.beginStructure();
    while (!in.atEnd())
        values.append(in.asVariant());
    in.endStructure();
    return values;
}

Key keyOfTexts(const QString &text)
{
    Key key = unit::sampleKey();
    key.dmId = key.container = key.icon = text;
    return key;
}

Action actionOfTexts(const QString &text)
{
    Action action = unit::sampleAction();
    action.dmId = action.action = action.webAppName = text;
    action.arguments = action.label = action.shortLabel = text;
    return action;
}

void addTextRows()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("a plain text") << QStringLiteral("Reception");
    QTest::newRow("an empty text") << QString();
    QTest::newRow("a text beyond the basic plane") << QString::fromUtf8("Grüße 電話 \U0001F4DE");
    QTest::newRow("quotes and statements") << QStringLiteral("'); DROP TABLE KEY; --\"\\");
    QTest::newRow("control characters") << QStringLiteral("\t\r\n\x01\x7f");
    QTest::newRow("a mebibyte") << QString(1 << 20, QLatin1Char('x'));
}

} // namespace

/// The records on a real bus.
class MarshallingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void aKeyTravelsWithDmIdSecondIdActionThirdAndContainerFourth();
    void anActionTravelsInTheOrderOfItsFields();
    void aKeyKeepsAnyTexts_data() { addTextRows(); }
    void aKeyKeepsAnyTexts();
    void anActionKeepsAnyTexts_data() { addTextRows(); }
    void anActionKeepsAnyTexts();
    void recordsKeepTheEdgesOfTheirNumbers_data();
    void recordsKeepTheEdgesOfTheirNumbers();
    void anEmptyListOfKeysIsAnEmptyArrayOfKeys();
    void anEmptyListOfActionsIsAnEmptyArrayOfActions();
    void aListKeepsItsRecordsInOrder();
    void positionsById();
    void capabilitiesByName();

private:
    std::unique_ptr<Echo> m_echo;
};

void MarshallingTest::initTestCase()
{
    registerDBusKey();
    registerDBusAction();
    registerZELTypes();
    m_echo = std::make_unique<Echo>();
}

void MarshallingTest::cleanupTestCase()
{
    m_echo.reset();
}

void MarshallingTest::aKeyTravelsWithDmIdSecondIdActionThirdAndContainerFourth()
{
    const QVariant received = (*m_echo)(QVariant::fromValue(unit::sampleKey()));
    QCOMPARE(m_echo->signature(), QStringLiteral("(xsxsisiii)"));
    const QVariantList expected{qlonglong{11},
                                QStringLiteral("dm"),
                                qlonglong{22},
                                QStringLiteral("home"),
                                33,
                                QStringLiteral("star"),
                                44,
                                55,
                                66};
    QCOMPARE(members(received), expected);
}

void MarshallingTest::anActionTravelsInTheOrderOfItsFields()
{
    const QVariant received = (*m_echo)(QVariant::fromValue(unit::sampleAction()));
    QCOMPARE(m_echo->signature(), QStringLiteral("(xsisssss)"));
    const QVariantList expected{qlonglong{11},
                                QStringLiteral("dm"),
                                22,
                                QStringLiteral("call"),
                                QStringLiteral("portal"),
                                QStringLiteral("501"),
                                QStringLiteral("Reception"),
                                QStringLiteral("Rec")};
    QCOMPARE(members(received), expected);
}

void MarshallingTest::aKeyKeepsAnyTexts()
{
    QFETCH(QString, text);
    const Key key = keyOfTexts(text);
    QCOMPARE(qdbus_cast<Key>((*m_echo)(QVariant::fromValue(key))), key);
}

void MarshallingTest::anActionKeepsAnyTexts()
{
    QFETCH(QString, text);
    const Action action = actionOfTexts(text);
    QCOMPARE(qdbus_cast<Action>((*m_echo)(QVariant::fromValue(action))), action);
}

void MarshallingTest::recordsKeepTheEdgesOfTheirNumbers_data()
{
    QTest::addColumn<qlonglong>("wide");
    QTest::addColumn<int>("narrow");
    QTest::newRow("zero") << qlonglong{0} << 0;
    QTest::newRow("an id beyond 32 bits") << (qlonglong{1} << 40) << 1;
    QTest::newRow("the greatest") << std::numeric_limits<qlonglong>::max()
                                  << std::numeric_limits<int>::max();
    QTest::newRow("the least") << std::numeric_limits<qlonglong>::min()
                               << std::numeric_limits<int>::min();
}

void MarshallingTest::recordsKeepTheEdgesOfTheirNumbers()
{
    QFETCH(qlonglong, wide);
    QFETCH(int, narrow);
    Key key = unit::sampleKey();
    key.idKey = key.idAction = wide;
    key.position = key.type = key.aom_type = key.aom_addr = narrow;
    QCOMPARE(qdbus_cast<Key>((*m_echo)(QVariant::fromValue(key))), key);

    Action action = unit::sampleAction();
    action.idAction = wide;
    action.type = narrow;
    QCOMPARE(qdbus_cast<Action>((*m_echo)(QVariant::fromValue(action))), action);
}

void MarshallingTest::anEmptyListOfKeysIsAnEmptyArrayOfKeys()
{
    const QVariant received = (*m_echo)(QVariant::fromValue(ListKey()));
    QCOMPARE(m_echo->signature(), QStringLiteral("a(xsxsisiii)"));
    QCOMPARE(qdbus_cast<ListKey>(received), ListKey());
}

void MarshallingTest::anEmptyListOfActionsIsAnEmptyArrayOfActions()
{
    const QVariant received = (*m_echo)(QVariant::fromValue(ListAction()));
    QCOMPARE(m_echo->signature(), QStringLiteral("a(xsisssss)"));
    QCOMPARE(qdbus_cast<ListAction>(received), ListAction());
}

void MarshallingTest::aListKeepsItsRecordsInOrder()
{
    const ListKey keys{unit::sampleKey(), Key(), unit::moduleKey(7, 5)};
    QCOMPARE(qdbus_cast<ListKey>((*m_echo)(QVariant::fromValue(keys))), keys);
    const ListAction actions{Action(), unit::sampleAction(), unit::userAction()};
    QCOMPARE(qdbus_cast<ListAction>((*m_echo)(QVariant::fromValue(actions))), actions);
}

void MarshallingTest::positionsById()
{
    const QMapIntInt positions{{1, 30}, {-2, 20}, {3, -10}};
    const QVariant received = (*m_echo)(QVariant::fromValue(positions));
    QCOMPARE(m_echo->signature(), QStringLiteral("a{ii}"));
    QCOMPARE(qdbus_cast<QMapIntInt>(received), positions);
}

void MarshallingTest::capabilitiesByName()
{
    const MapQStringCapability capabilities{
        {QStringLiteral("a"), {QStringLiteral("text of a"), 1}},
        {QStringLiteral("b"), {QString(), -2}},
    };
    const QVariant received = (*m_echo)(QVariant::fromValue(capabilities));
    QCOMPARE(m_echo->signature(), QStringLiteral("a{s(si)}"));
    QVERIFY(qdbus_cast<MapQStringCapability>(received) == capabilities);
}

PROGKEYS_TEST_MAIN(MarshallingTest)
#include "MarshallingTest.moc"
