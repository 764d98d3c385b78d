#include "records/Capability.h"
#include "support/Echo.h"
#include "support/Samples.h"
#include "support/TestProgram.h"

#include <QDBusArgument>

#include <limits>

namespace {

constexpr qlonglong LongMin = std::numeric_limits<qlonglong>::min();
constexpr qlonglong LongMax = std::numeric_limits<qlonglong>::max();
constexpr int IntMin = std::numeric_limits<int>::min();
constexpr int IntMax = std::numeric_limits<int>::max();

Key extremeKey()
{
    Key key;
    key.idKey = LongMin;
    key.idAction = LongMax;
    key.position = key.aom_type = IntMin;
    key.type = key.aom_addr = IntMax;
    key.container = QString::fromUtf8("Grüße 電話 \U0001F4DE\n\x01");
    return key;
}

/// The members of a structure in wire order.
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

template <typename Record, typename Value>
void changeField(Record &record, Value Record::*member)
{
    if constexpr (std::is_same_v<Value, QString>)
        record.*member += QLatin1Char('x');
    else
        ++(record.*member);
}

/// The names of the fields that the comparison ignores.
template <typename Record>
QStringList ignoredFields(const Record &sample)
{
    QStringList names;
    const auto check = [&](const auto &field) {
        Record changed = sample;
        changeField(changed, field.member);
        if (changed == sample)
            names.append(QLatin1String(field.name));
    };
    std::apply([&](const auto &...field) { (check(field), ...); }, Record::fields());
    return names;
}

} // namespace

/// Marshalling and demarshalling of the records and their containers.
class RecordsTest : public QObject
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

    void aKeyIsSentWithItsActionBeforeItsContainer()
    {
        const QVariantList expected{qlonglong{11},
                                    QStringLiteral("dm"),
                                    qlonglong{22},
                                    QStringLiteral("home"),
                                    33,
                                    QStringLiteral("star"),
                                    44,
                                    55,
                                    66};
        QCOMPARE(members((*m_echo)(QVariant::fromValue(unit::sampleKey()))), expected);
        QCOMPARE(m_echo->signature(), QStringLiteral("(xsxsisiii)"));
    }

    void anActionIsSentInTheOrderOfItsFields()
    {
        const QVariantList expected{qlonglong{11},
                                    QStringLiteral("dm"),
                                    22,
                                    QStringLiteral("call"),
                                    QStringLiteral("portal"),
                                    QStringLiteral("501"),
                                    QStringLiteral("Reception"),
                                    QStringLiteral("Rec")};
        QCOMPARE(members((*m_echo)(QVariant::fromValue(unit::sampleAction()))), expected);
        QCOMPARE(m_echo->signature(), QStringLiteral("(xsisssss)"));
    }

    void aListOfRecordsWithExtremeValuesIsReceivedUnchanged()
    {
        const ListKey keys{extremeKey(), Key(), unit::sampleKey()};
        QCOMPARE(qdbus_cast<ListKey>((*m_echo)(QVariant::fromValue(keys))), keys);
        const ListAction actions{unit::sampleAction(), Action()};
        QCOMPARE(qdbus_cast<ListAction>((*m_echo)(QVariant::fromValue(actions))), actions);
        QCOMPARE(m_echo->signature(), QStringLiteral("a(xsisssss)"));
    }

    void anEmptyListOfKeysIsSentAsAnEmptyArrayOfKeys()
    {
        QCOMPARE(qdbus_cast<ListKey>((*m_echo)(QVariant::fromValue(ListKey()))), ListKey());
        QCOMPARE(m_echo->signature(), QStringLiteral("a(xsxsisiii)"));
    }

    void aMapOfPositionsIsReceivedUnchanged()
    {
        const QMapIntInt positions{{IntMin, 30}, {-2, 20}, {3, IntMax}};
        QCOMPARE(qdbus_cast<QMapIntInt>((*m_echo)(QVariant::fromValue(positions))), positions);
        QCOMPARE(m_echo->signature(), QStringLiteral("a{ii}"));
    }

    // The service has no capabilities, so no system test covers them.
    void aMapOfCapabilitiesIsReceivedUnchanged()
    {
        const MapQStringCapability capabilities{{QStringLiteral("a"), {QStringLiteral("text"), 1}},
                                                {QStringLiteral("b"), {QString(), -2}}};
        const QVariant received = (*m_echo)(QVariant::fromValue(capabilities));
        QVERIFY(qdbus_cast<MapQStringCapability>(received) == capabilities);
        QCOMPARE(m_echo->signature(), QStringLiteral("a{s(si)}"));
    }

    void recordsAreEqualOnlyIfAllFieldsAreEqual()
    {
        QVERIFY(unit::sampleKey() == unit::sampleKey());
        QCOMPARE(ignoredFields(unit::sampleKey()), QStringList());
        QVERIFY(unit::sampleAction() == unit::sampleAction());
        QCOMPARE(ignoredFields(unit::sampleAction()), QStringList());
    }

private:
    std::unique_ptr<unit::Echo> m_echo;
};

PROGKEYS_TEST(RecordsTest)
#include "RecordsTest.moc"
