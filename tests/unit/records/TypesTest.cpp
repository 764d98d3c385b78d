#include "QtCompatibility.h"
#include "records/Capability.h"
#include "support/Samples.h"
#include "support/TestProgram.h"
#include "support/TypeNamed.h"

using ChangeKey = void (*)(Key &);
using ChangeAction = void (*)(Action &);
Q_DECLARE_METATYPE(ChangeKey)
Q_DECLARE_METATYPE(ChangeAction)

/// The records as values, and how the type systems know them.
class TypesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        registerDBusKey();
        registerDBusAction();
        registerZELTypes();
    }

    void aDefaultKeyHasAllNumbersMinusOneAndEmptyTexts()
    {
        const Key key;
        QCOMPARE(key.idKey, qlonglong{-1});
        QCOMPARE(key.idAction, qlonglong{-1});
        QCOMPARE(key.position, -1);
        QCOMPARE(key.type, -1);
        QCOMPARE(key.aom_type, -1);
        QCOMPARE(key.aom_addr, -1);
        QCOMPARE(key.dmId + key.container + key.icon, QString());
    }

    void aDefaultActionIsTheReservedOneWithTypeZeroAndEmptyTexts()
    {
        const Action action;
        QCOMPARE(action.idAction, qlonglong{-1});
        QCOMPARE(action.type, 0);
        QCOMPARE(action.dmId + action.action + action.webAppName + action.arguments + action.label +
                     action.shortLabel,
                 QString());
    }

    void aDefaultCapabilityHasNoNameAndTheValueZero()
    {
        const Capability capability;
        QCOMPARE(capability.name, QString());
        QCOMPARE(capability.value, 0);
    }

    void aCopyIsEqualAndIndependent()
    {
        const Key key = unit::sampleKey();
        Key copy = key;
        QCOMPARE(copy, key);
        copy.container = QStringLiteral("elsewhere");
        QCOMPARE(key.container, QStringLiteral("home"));

        const Action action = unit::sampleAction();
        Action assigned;
        assigned = action;
        QCOMPARE(assigned, action);
        assigned.label = QStringLiteral("other");
        QCOMPARE(action.label, QStringLiteral("Reception"));
    }

    void recordsThatDifferInOneFieldAreNotEqual_data()
    {
        QTest::addColumn<ChangeKey>("change");
        const auto row = [](const char *name, ChangeKey change) { QTest::newRow(name) << change; };
        row("another idKey", [](Key &key) { ++key.idKey; });
        row("another dmId", [](Key &key) { key.dmId += QLatin1Char('x'); });
        row("another container", [](Key &key) { key.container += QLatin1Char('x'); });
        row("another idAction", [](Key &key) { ++key.idAction; });
        row("another position", [](Key &key) { ++key.position; });
        row("another icon", [](Key &key) { key.icon += QLatin1Char('x'); });
        row("another type", [](Key &key) { ++key.type; });
        row("another aom_type", [](Key &key) { ++key.aom_type; });
        row("another aom_addr", [](Key &key) { ++key.aom_addr; });
    }

    void recordsThatDifferInOneFieldAreNotEqual()
    {
        QFETCH(ChangeKey, change);
        Key changed = unit::sampleKey();
        change(changed);
        QVERIFY(!(changed == unit::sampleKey()));
    }

    void actionsThatDifferInOneFieldAreNotEqual_data()
    {
        QTest::addColumn<ChangeAction>("change");
        const auto row = [](const char *name, ChangeAction change) {
            QTest::newRow(name) << change;
        };
        row("another idAction", [](Action &action) { ++action.idAction; });
        row("another dmId", [](Action &action) { action.dmId += QLatin1Char('x'); });
        row("another type", [](Action &action) { ++action.type; });
        row("another action", [](Action &action) { action.action += QLatin1Char('x'); });
        row("another webAppName", [](Action &action) { action.webAppName += QLatin1Char('x'); });
        row("other arguments", [](Action &action) { action.arguments += QLatin1Char('x'); });
        row("another label", [](Action &action) { action.label += QLatin1Char('x'); });
        row("another shortLabel", [](Action &action) { action.shortLabel += QLatin1Char('x'); });
    }

    void actionsThatDifferInOneFieldAreNotEqual()
    {
        QFETCH(ChangeAction, change);
        Action changed = unit::sampleAction();
        change(changed);
        QVERIFY(!(changed == unit::sampleAction()));
    }

    void eachTypeHasItsBusSignature_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("signature");
        const auto row = [](const char *name, const QVariant &value, const char *signature) {
            QTest::newRow(name) << value << QString::fromLatin1(signature);
        };
        row("a key", QVariant::fromValue(Key()), "(xsxsisiii)");
        row("a list of keys", QVariant::fromValue(ListKey()), "a(xsxsisiii)");
        row("an action", QVariant::fromValue(Action()), "(xsisssss)");
        row("a list of actions", QVariant::fromValue(ListAction()), "a(xsisssss)");
        row("a capability", QVariant::fromValue(Capability()), "(si)");
        row("capabilities by name", QVariant::fromValue(MapQStringCapability()), "a{s(si)}");
        row("a map of integers", QVariant::fromValue(QMapIntInt()), "a{ii}");
    }

    void eachTypeHasItsBusSignature()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, signature);
        QCOMPARE(QString::fromLatin1(zel::qt::busSignature(value)), signature);
    }

    void eachTypeIsFoundByItsName_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<int>("id");
        QTest::newRow("Key") << QByteArray("Key") << qMetaTypeId<Key>();
        QTest::newRow("ListKey") << QByteArray("ListKey") << qMetaTypeId<ListKey>();
        QTest::newRow("Action") << QByteArray("Action") << qMetaTypeId<Action>();
        QTest::newRow("ListAction") << QByteArray("ListAction") << qMetaTypeId<ListAction>();
        QTest::newRow("Capability") << QByteArray("Capability") << qMetaTypeId<Capability>();
        QTest::newRow("MapQStringCapability")
            << QByteArray("MapQStringCapability") << qMetaTypeId<MapQStringCapability>();
        QTest::newRow("QMapIntInt") << QByteArray("QMapIntInt") << qMetaTypeId<QMapIntInt>();
    }

    void eachTypeIsFoundByItsName()
    {
        QFETCH(QByteArray, name);
        QFETCH(int, id);
        QCOMPARE(unit::typeNamed(name.constData()), id);
    }

    void registeringAgainChangesNothing()
    {
        const int keyType = unit::typeNamed("Key");
        const int actionType = unit::typeNamed("Action");
        registerDBusKey();
        registerDBusAction();
        QCOMPARE(unit::typeNamed("Key"), keyType);
        QCOMPARE(unit::typeNamed("Action"), actionType);
        QCOMPARE(zel::qt::busSignature(QVariant::fromValue(ListKey())), "a(xsxsisiii)");
    }
};

PROGKEYS_TEST(TypesTest)
#include "TypesTest.moc"
