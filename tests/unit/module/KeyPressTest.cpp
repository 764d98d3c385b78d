#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDBusArgument>

#include <cmath>
#include <limits>

namespace {

const char *const ArgumentNames[] = {"aom_key_num", "aom_type", "addr"};

/// A press of key 5 on module 2 of type 1, with one argument replaced.
ZELEvent press(const char *replaced = nullptr, const QVariant &value = {})
{
    const int numbers[] = {5, 1, 2};
    ZELEvent event;
    event.setEvtName(QStringLiteral("AOM_KEY_PRESS_EVENT"));
    for (int index = 0; index < 3; ++index) {
        const bool isReplaced = replaced && qstrcmp(replaced, ArgumentNames[index]) == 0;
        event.addArgument(isReplaced ? value : numbers[index], QLatin1String(ArgumentNames[index]),
                          true);
    }
    return event;
}

/// As the framework does when the event has come.
void deliver(const ZELEvent &event)
{
    QVERIFY(QMetaObject::invokeMethod(&unit::service(), "aomKeyPressed", Qt::DirectConnection,
                                      Q_ARG(ZELEvent, event)));
}

struct Told
{
    Key key;
    Action action;
    bool exists = false;
};

Told told(const ZELEvent &event)
{
    return {qdbus_cast<Key>(event.getArgument(QStringLiteral("key"))),
            qdbus_cast<Action>(event.getArgument(QStringLiteral("action"))),
            event.getArgument(QStringLiteral("exists")).toBool()};
}

} // namespace

class KeyPressTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { unit::resetService(); }

    void aStoredKeyIsToldWithItsAction();
    void anUnprogrammedKeyIsToldWithItsPlaceAlone();
    void aKeyElsewhereOrOfAnotherTypeIsNotFound_data();
    void aKeyElsewhereOrOfAnotherTypeIsNotFound();
    void aStoredKeyWhoseActionIsGoneIsToldWithADefaultAction();
    void theFirstOfSeveralKeysIsTold();
    void aValueThatIsANumberIsTaken_data();
    void aValueThatIsANumberIsTaken();
    void aValueThatIsNoNumberIsNamed_data();
    void aValueThatIsNoNumberIsNamed();
    void aMissingArgumentIsNamed_data();
    void aMissingArgumentIsNamed();
    void onlyTheFirstBadArgumentIsNamed();
    void aBadArgumentIsNotToldOfAtLevelTwo();
    void theFirstArgumentOfANameCounts();
};

void KeyPressTest::aStoredKeyIsToldWithItsAction()
{
    const Action action = unit::stored(unit::userAction());
    const Key key = unit::stored(unit::moduleKey(action.idAction, 5));
    unit::EventRecorder recorder;
    unit::LogCapture log(6);
    deliver(press());
    QCOMPARE(log.take(), QStringList());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.first().getEvtName(), QStringLiteral("AOMKEY_PRESS_NTF"));
    QCOMPARE(told(events.first()).key, key);
    QCOMPARE(told(events.first()).action, action);
    QVERIFY(told(events.first()).exists);
}

void KeyPressTest::anUnprogrammedKeyIsToldWithItsPlaceAlone()
{
    unit::EventRecorder recorder;
    deliver(press());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    Key key;
    key.type = 1;
    key.position = 5;
    key.aom_type = 1;
    key.aom_addr = 2;
    QCOMPARE(told(events.first()).key, key);
    QCOMPARE(told(events.first()).action, Action());
    QVERIFY(!told(events.first()).exists);
}

void KeyPressTest::aKeyElsewhereOrOfAnotherTypeIsNotFound_data()
{
    QTest::addColumn<Key>("key");
    const auto row = [](const char *name, int type, int position, int aom_type, int aom_addr) {
        Key key = unit::moduleKey(-1, position);
        key.type = type;
        key.aom_type = aom_type;
        key.aom_addr = aom_addr;
        QTest::newRow(name) << key;
    };
    row("a key of the set", 0, 5, 1, 2);
    row("a key of another type", 2, 5, 1, 2);
    row("a key at another position", 1, 6, 1, 2);
    row("a key on another kind of module", 1, 5, 2, 2);
    row("a key on a module at another address", 1, 5, 1, 1);
}

void KeyPressTest::aKeyElsewhereOrOfAnotherTypeIsNotFound()
{
    QFETCH(Key, key);
    unit::stored(key);
    unit::EventRecorder recorder;
    deliver(press());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QVERIFY(!told(events.first()).exists);
}

void KeyPressTest::aStoredKeyWhoseActionIsGoneIsToldWithADefaultAction()
{
    const Key key = unit::stored(unit::moduleKey(99, 5));
    unit::EventRecorder recorder;
    unit::LogCapture log(6);
    deliver(press());
    QCOMPARE(log.take(), QStringList{QStringLiteral("error: No action found for key of id 99")});
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(told(events.first()).key, key);
    QCOMPARE(told(events.first()).action, Action());
    QVERIFY(told(events.first()).exists);
}

void KeyPressTest::theFirstOfSeveralKeysIsTold()
{
    const Key first = unit::stored(unit::moduleKey(-1, 5));
    unit::stored(unit::moduleKey(-1, 5));
    unit::EventRecorder recorder;
    deliver(press());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(told(events.first()).key, first);
}

void KeyPressTest::aValueThatIsANumberIsTaken_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("number");
    QTest::newRow("zero") << QVariant(0) << 0;
    QTest::newRow("a negative number") << QVariant(-7) << -7;
    QTest::newRow("the greatest number") << QVariant(INT_MAX) << INT_MAX;
    QTest::newRow("the least number") << QVariant(INT_MIN) << INT_MIN;
    QTest::newRow("a byte") << QVariant::fromValue(uchar{200}) << 200;
    QTest::newRow("16 bits") << QVariant::fromValue(short{-300}) << -300;
    QTest::newRow("16 bits without a sign") << QVariant::fromValue(ushort{60000}) << 60000;
    QTest::newRow("32 bits without a sign") << QVariant(7U) << 7;
    QTest::newRow("64 bits") << QVariant(qlonglong{-8}) << -8;
    QTest::newRow("64 bits without a sign") << QVariant(qulonglong{9}) << 9;
    QTest::newRow("the greatest number in 64 bits") << QVariant(qlonglong{INT_MAX}) << INT_MAX;
    QTest::newRow("the least number in 64 bits") << QVariant(qlonglong{INT_MIN}) << INT_MIN;
    QTest::newRow("a whole floating-point number") << QVariant(5.0) << 5;
    QTest::newRow("the least number in floating point") << QVariant(-2147483648.0) << INT_MIN;
    QTest::newRow("a text of digits") << QVariant(QStringLiteral("12")) << 12;
    QTest::newRow("a text of a negative number") << QVariant(QStringLiteral("-12")) << -12;
    QTest::newRow("a truth") << QVariant(true) << 1;
}

void KeyPressTest::aValueThatIsANumberIsTaken()
{
    QFETCH(QVariant, value);
    QFETCH(int, number);
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    for (const char *name : ArgumentNames)
        deliver(press(name, value));
    QCOMPARE(log.take(), QStringList());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 3);
    QCOMPARE(told(events.at(0)).key.position, number);
    QCOMPARE(told(events.at(1)).key.aom_type, number);
    QCOMPARE(told(events.at(2)).key.aom_addr, number);
}

void KeyPressTest::aValueThatIsNoNumberIsNamed_data()
{
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char *name, const QVariant &value) { QTest::newRow(name) << value; };
    row("no value at all", QVariant());
    row("an empty text", QStringLiteral(""));
    row("a word", QStringLiteral("five"));
    row("a number and more", QStringLiteral("5a"));
    row("a number in another base", QStringLiteral("0x5"));
    row("a fraction as text", QStringLiteral("5.5"));
    row("a text beyond 32 bits", QStringLiteral("4294967301"));
    row("the first beyond 32 bits", qlonglong{INT_MAX} + 1);
    row("64 bits whose low ones are a key number", (qlonglong{1} << 32) + 5);
    row("the least of 64 bits", std::numeric_limits<qlonglong>::min());
    row("32 bits without a sign that are too many", 4294967295U);
    row("64 bits without a sign that are too many", std::numeric_limits<qulonglong>::max());
    row("a floating-point number that is too great", 4294967301.0);
    row("a floating-point number beyond all integers", 1e300);
    row("infinity", std::numeric_limits<double>::infinity());
    row("negative infinity", -std::numeric_limits<double>::infinity());
    row("not a number", std::numeric_limits<double>::quiet_NaN());
    row("a list", QVariantList{5});
    row("a list of texts", QStringList{QStringLiteral("5")});
    row("a key", QVariant::fromValue(unit::sampleKey()));
    row("a map", QVariant::fromValue(QMapIntInt{{5, 5}}));
}

void KeyPressTest::aValueThatIsNoNumberIsNamed()
{
    QFETCH(QVariant, value);
    // The last line names "aom_addr", although the argument is called "addr".
    const char *const named[] = {"aom_key_num", "aom_type", "aom_addr"};
    unit::EventRecorder recorder;
    for (int index = 0; index < 3; ++index) {
        unit::LogCapture log(3);
        deliver(press(ArgumentNames[index], value));
        QCOMPARE(log.take(), QStringList{QStringLiteral("error: Argument %1 passed to event "
                                                        "AOM_KEY_PRESS_EVENT has got an invalid "
                                                        "value.")
                                             .arg(QLatin1String(named[index]))});
    }
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyPressTest::aMissingArgumentIsNamed_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("named");
    const auto row = [](const char *name, const QStringList &present, const char *named) {
        QTest::newRow(name) << present << QString::fromLatin1(named);
    };
    const QString number = QStringLiteral("aom_key_num");
    const QString type = QStringLiteral("aom_type");
    const QString address = QStringLiteral("addr");
    row("all three are missing", {}, "aom_key_num");
    row("the key number is missing", {type, address}, "aom_key_num");
    row("the module type is missing", {number, address}, "aom_type");
    row("the address is missing", {number, type}, "aom_addr");
    row("the address goes by another name", {number, type, QStringLiteral("aom_addr")}, "aom_addr");
}

void KeyPressTest::aMissingArgumentIsNamed()
{
    QFETCH(QStringList, present);
    QFETCH(QString, named);
    ZELEvent event;
    event.setEvtName(QStringLiteral("SOME_EVENT"));
    for (const QString &name : present)
        event.addArgument(1, name, true);
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    deliver(event);
    QCOMPARE(log.take(), QStringList{QStringLiteral("error: Argument %1 passed to event SOME_EVENT "
                                                    "has got an invalid value.")
                                         .arg(named)});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyPressTest::onlyTheFirstBadArgumentIsNamed()
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("E"));
    event.addArgument(QStringLiteral("?"), QStringLiteral("addr"), true);
    event.addArgument(QStringLiteral("?"), QStringLiteral("aom_type"), true);
    event.addArgument(1, QStringLiteral("aom_key_num"), true);
    unit::LogCapture log(7);
    deliver(event);
    QCOMPARE(log.take(),
             QStringList{QStringLiteral(
                 "error: Argument aom_type passed to event E has got an invalid value.")});
}

void KeyPressTest::aBadArgumentIsNotToldOfAtLevelTwo()
{
    unit::LogCapture log(2);
    for (const char *name : ArgumentNames)
        deliver(press(name, QStringLiteral("?")));
    QCOMPARE(log.take(), QStringList());
}

void KeyPressTest::theFirstArgumentOfANameCounts()
{
    ZELEvent event = press();
    event.addArgument(QStringLiteral("?"), QStringLiteral("addr"), true);
    unit::EventRecorder recorder;
    deliver(event);
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(told(events.first()).key.aom_addr, 2);
}

PROGKEYS_TEST_MAIN(KeyPressTest)
#include "KeyPressTest.moc"
