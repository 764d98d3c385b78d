#include "records/Capability.h"
#include "support/Echo.h"
#include "support/Samples.h"
#include "support/TestProgram.h"

#include <QDBusArgument>

#include <limits>

namespace {

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

/// The records on the wire.
class MarshallingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        registerDBusKey();
        registerDBusAction();
        registerZELTypes();
        m_echo = std::make_unique<unit::Echo>();
    }

    void cleanupTestCase() { m_echo.reset(); }

    void aKeyTravelsWithDmIdSecondIdActionThirdAndContainerFourth()
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

    void anActionTravelsInTheOrderOfItsFields()
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

    void aKeyKeepsAnyTexts_data() { addTextRows(); }
    void aKeyKeepsAnyTexts()
    {
        QFETCH(QString, text);
        const Key key = keyOfTexts(text);
        QCOMPARE(qdbus_cast<Key>((*m_echo)(QVariant::fromValue(key))), key);
    }

    void anActionKeepsAnyTexts_data() { addTextRows(); }
    void anActionKeepsAnyTexts()
    {
        QFETCH(QString, text);
        const Action action = actionOfTexts(text);
        QCOMPARE(qdbus_cast<Action>((*m_echo)(QVariant::fromValue(action))), action);
    }

    void recordsKeepTheEdgesOfTheirNumbers_data()
    {
        QTest::addColumn<qlonglong>("wide");
        QTest::addColumn<int>("narrow");
        QTest::newRow("zero") << qlonglong{0} << 0;
        QTest::newRow("an id beyond 32 bits") << (qlonglong{1} << 40) << 1;
        QTest::newRow("the greatest")
            << std::numeric_limits<qlonglong>::max() << std::numeric_limits<int>::max();
        QTest::newRow("the least")
            << std::numeric_limits<qlonglong>::min() << std::numeric_limits<int>::min();
    }

    void recordsKeepTheEdgesOfTheirNumbers()
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

    void anEmptyListOfKeysIsAnEmptyArrayOfKeys()
    {
        const QVariant received = (*m_echo)(QVariant::fromValue(ListKey()));
        QCOMPARE(m_echo->signature(), QStringLiteral("a(xsxsisiii)"));
        QCOMPARE(qdbus_cast<ListKey>(received), ListKey());
    }

    void anEmptyListOfActionsIsAnEmptyArrayOfActions()
    {
        const QVariant received = (*m_echo)(QVariant::fromValue(ListAction()));
        QCOMPARE(m_echo->signature(), QStringLiteral("a(xsisssss)"));
        QCOMPARE(qdbus_cast<ListAction>(received), ListAction());
    }

    void aListKeepsItsRecordsInOrder()
    {
        const ListKey keys{unit::sampleKey(), Key(), unit::moduleKey(7, 5)};
        QCOMPARE(qdbus_cast<ListKey>((*m_echo)(QVariant::fromValue(keys))), keys);
        const ListAction actions{Action(), unit::sampleAction(), unit::userAction()};
        QCOMPARE(qdbus_cast<ListAction>((*m_echo)(QVariant::fromValue(actions))), actions);
    }

    void positionsById()
    {
        const QMapIntInt positions{{1, 30}, {-2, 20}, {3, -10}};
        const QVariant received = (*m_echo)(QVariant::fromValue(positions));
        QCOMPARE(m_echo->signature(), QStringLiteral("a{ii}"));
        QCOMPARE(qdbus_cast<QMapIntInt>(received), positions);
    }

    void capabilitiesByName()
    {
        const MapQStringCapability capabilities{
            {QStringLiteral("a"), {QStringLiteral("text of a"), 1}},
            {QStringLiteral("b"), {QString(), -2}},
        };
        const QVariant received = (*m_echo)(QVariant::fromValue(capabilities));
        QCOMPARE(m_echo->signature(), QStringLiteral("a{s(si)}"));
        QVERIFY(qdbus_cast<MapQStringCapability>(received) == capabilities);
    }

private:
    std::unique_ptr<unit::Echo> m_echo;
};

PROGKEYS_TEST(MarshallingTest)
#include "MarshallingTest.moc"
