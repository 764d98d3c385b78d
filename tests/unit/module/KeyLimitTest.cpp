#include "support/EventRecorder.h"
#include "support/PeerModule.h"
#include "support/Service.h"
#include "support/TestMain.h"

/// The limit of keys of the set.
class KeyLimitTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aLimitHoldsForKeysOfTheSet_data();
    void aLimitHoldsForKeysOfTheSet();
    void aRefusalIsAnnouncedAndInsertsNothing();
    void keysOfOtherTypesDoNotCount();
    void theLimitIsReadOnceForAKeyOfAnyType_data();
    void theLimitIsReadOnceForAKeyOfAnyType();
    void aKeyOfAMissingActionDoesNotAskForTheLimit();

private:
    static qlonglong create(int type);
    static std::unique_ptr<unit::PeerModule> limit(const QString &text);
};

void KeyLimitTest::init()
{
    unit::resetService();
}

qlonglong KeyLimitTest::create(int type)
{
    Key key = unit::setKey(-1);
    key.type = type;
    return unit::service().createProgrammableKey(key);
}

std::unique_ptr<unit::PeerModule> KeyLimitTest::limit(const QString &text)
{
    return std::make_unique<unit::PeerModule>(QStringLiteral("SettingsManager"),
                                              unit::replyWith({text}));
}

void KeyLimitTest::aLimitHoldsForKeysOfTheSet_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("type");
    QTest::addColumn<qlonglong>("answer");
    const auto row = [](const char *name, const char *text, int type, qlonglong answer) {
        QTest::newRow(name) << QString::fromLatin1(text) << type << answer;
    };
    // Two keys of the set are there.
    row("there is room for one more", "3", 0, 3);
    row("the limit is reached", "2", 0, -1);
    row("the limit is exceeded", "1", 0, -1);
    row("a limit of 0 refuses every key of the set", "0", 0, -1);
    row("a limit below 0 does, too", "-1", 0, -1);
    row("a limit that is no number is one of 0", "many", 0, -1);
    row("an empty limit is one of 0", "", 0, -1);
    row("a limit that only begins with a number is one of 0", "3 keys", 0, -1);
    row("a limit in another base is one of 0", "0x10", 0, -1);
    row("a limit beyond 32 bits is one of 0", "4294967299", 0, -1);
    row("a module key is not held to the limit", "0", 1, 3);
    row("a key of an unknown type is not, either", "0", 7, 3);
    row("a key of a negative type is not, either", "0", -1, 3);
}

void KeyLimitTest::aLimitHoldsForKeysOfTheSet()
{
    QFETCH(QString, text);
    QFETCH(int, type);
    QFETCH(qlonglong, answer);
    unit::stored(unit::setKey(-1));
    unit::stored(unit::setKey(-1));
    const auto settings = limit(text);
    QCOMPARE(create(type), answer);
    QCOMPARE(unit::service().getAllProgrammableKeys().size(), answer < 0 ? 2 : 3);
}

void KeyLimitTest::aRefusalIsAnnouncedAndInsertsNothing()
{
    const auto settings = limit(QStringLiteral("1"));
    QCOMPARE(create(0), qlonglong{1});
    unit::EventRecorder recorder;
    QCOMPARE(create(0), qlonglong{-1});
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(unit::describe(events.first()), QStringList{QStringLiteral("KO_PROGKEYS_DB_FULL")});
    QCOMPARE(unit::service().getAllProgrammableKeys().size(), 1);
}

void KeyLimitTest::keysOfOtherTypesDoNotCount()
{
    const auto settings = limit(QStringLiteral("1"));
    QCOMPARE(create(1), qlonglong{1});
    QCOMPARE(create(2), qlonglong{2});
    QCOMPARE(create(0), qlonglong{3});
    QCOMPARE(create(0), qlonglong{-1});
}

void KeyLimitTest::theLimitIsReadOnceForAKeyOfAnyType_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("a key of the set") << 0;
    QTest::newRow("a module key") << 1;
    QTest::newRow("a key of another type") << 7;
}

void KeyLimitTest::theLimitIsReadOnceForAKeyOfAnyType()
{
    QFETCH(int, type);
    const auto settings = limit(QStringLiteral("5"));
    create(type);
    const QList<QDBusMessage> calls = settings->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().arguments(), QVariantList{QStringLiteral("ProgKeysMax")});
}

void KeyLimitTest::aKeyOfAMissingActionDoesNotAskForTheLimit()
{
    const auto settings = limit(QStringLiteral("0"));
    QCOMPARE(unit::service().createProgrammableKey(unit::setKey(99)), qlonglong{-2});
    QCOMPARE(settings->takeCalls().size(), 0);
}

PROGKEYS_TEST_MAIN(KeyLimitTest)
#include "KeyLimitTest.moc"
