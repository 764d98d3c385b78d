#include "events/Notifications.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDBusArgument>

namespace {

const Key TheKey = unit::sampleKey();
const Action TheAction = unit::sampleAction();
const KeyPlace ThePlace{1, 2, 3};

using Build = bool (*)(ZELEvent &);

} // namespace

Q_DECLARE_METATYPE(Build)

/// One builder for each event.
class BuildersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void eachEventHasItsNameAndItsFlaggedArgumentsInOrder_data();
    void eachEventHasItsNameAndItsFlaggedArgumentsInOrder();
    void eachEventIsSentOnceAndSaidToBe_data();
    void eachEventIsSentOnceAndSaidToBe();
    void aCreatedOrModifiedRecordIsCarriedWhole_data();
    void aCreatedOrModifiedRecordIsCarriedWhole();
    void aDeletedRecordIsCarriedAsItsBareId();
    void aPressCarriesTheKeyAndTheActionWhole();
    void anEventWithoutArgumentsTravelsWithoutAny();
    void theRecordArrivesOnTheBus();
    void thePlaceOfAKeyIsItsAddressModuleTypeAndPosition();
};

void BuildersTest::initTestCase()
{
    registerDBusKey();
    registerDBusAction();
}

void BuildersTest::eachEventHasItsNameAndItsFlaggedArgumentsInOrder_data()
{
    QTest::addColumn<Build>("build");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, Build build, const char *text) {
        QTest::newRow(name) << build << QString::fromLatin1(text);
    };
    row(
        "a created key",
        [](ZELEvent &event) { return unit::notifications().keyCreated(event, TheKey); },
        "KEY_CREATE_NTF|idKey: Key ");
    row(
        "a modified key",
        [](ZELEvent &event) { return unit::notifications().keyModified(event, TheKey); },
        "KEY_MODIFY_NTF|idKey: Key ");
    row(
        "a deleted key", [](ZELEvent &event) { return unit::notifications().keyDeleted(event, 7); },
        "KEY_DELETE_NTF|idKey: qlonglong 7");
    row(
        "no room for a key", [](ZELEvent &event) { return unit::notifications().keysFull(event); },
        "KO_PROGKEYS_DB_FULL");
    row(
        "a created action",
        [](ZELEvent &event) { return unit::notifications().actionCreated(event, TheAction); },
        "ACTION_CREATE_NTF|idAction: Action ");
    row(
        "a modified action",
        [](ZELEvent &event) { return unit::notifications().actionModified(event, TheAction); },
        "ACTION_MODIFY_NTF|idAction: Action ");
    row(
        "a deleted action",
        [](ZELEvent &event) { return unit::notifications().actionDeleted(event, -7); },
        "ACTION_DELETE_NTF|idAction: qlonglong -7");
    row(
        "a reset of the database",
        [](ZELEvent &event) { return unit::notifications().databaseReset(event); }, "DB_RESET_NTF");
    row(
        "a label for a module",
        [](ZELEvent &event) {
            return unit::notifications().setModuleLabel(event, ThePlace, 4, QStringLiteral("Rec"));
        },
        "AOM_SET_LABEL_PROPERTY_REC|addr: int 1|aom_type: int 2|key_num: int 3|"
        "label_state: int 4|label_str: QString Rec");
    row(
        "an icon for a module",
        [](ZELEvent &event) { return unit::notifications().setModuleIcon(event, ThePlace, 4, -5); },
        "AOM_SET_ICON_PROPERTY_REC|addr: int 1|aom_type: int 2|key_num: int 3|icon_x: int 4|"
        "icon_y: int -5");
    row(
        "a press of a stored key",
        [](ZELEvent &event) {
            return unit::notifications().moduleKeyPressed(event, TheKey, TheAction, true);
        },
        "AOMKEY_PRESS_NTF|key: Key |action: Action |exists: bool true");
    row(
        "a press of an unknown key",
        [](ZELEvent &event) {
            return unit::notifications().moduleKeyPressed(event, Key(), Action(), false);
        },
        "AOMKEY_PRESS_NTF|key: Key |action: Action |exists: bool false");
}

void BuildersTest::eachEventHasItsNameAndItsFlaggedArgumentsInOrder()
{
    QFETCH(Build, build);
    QFETCH(QString, text);
    ZELEvent event;
    QVERIFY(build(event));
    QCOMPARE(unit::describe(event), text.split(QLatin1Char('|')));
}

void BuildersTest::eachEventIsSentOnceAndSaidToBe_data()
{
    eachEventHasItsNameAndItsFlaggedArgumentsInOrder_data();
}

void BuildersTest::eachEventIsSentOnceAndSaidToBe()
{
    QFETCH(Build, build);
    QFETCH(QString, text);
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    ZELEvent event;
    QVERIFY(build(event));
    const QString name = text.split(QLatin1Char('|')).first();
    QCOMPARE(log.take(), QStringList{QStringLiteral("debug: event %1 sent").arg(name)});
    QCOMPARE(recorder.takeNames(), QStringList{name});
    QCOMPARE(recorder.messages().first().signature(), QStringLiteral("sa(svb)"));
    QCOMPARE(recorder.messages().first().path(),
             QStringLiteral("/com/velmora/Tessaro/ZelProgrammableKeys"));
}

void BuildersTest::aCreatedOrModifiedRecordIsCarriedWhole_data()
{
    QTest::addColumn<Build>("build");
    const auto row = [](const char *name, Build build) { QTest::newRow(name) << build; };
    row("a created key",
        [](ZELEvent &event) { return unit::notifications().keyCreated(event, TheKey); });
    row("a modified key",
        [](ZELEvent &event) { return unit::notifications().keyModified(event, TheKey); });
    row("a created action",
        [](ZELEvent &event) { return unit::notifications().actionCreated(event, TheAction); });
    row("a modified action",
        [](ZELEvent &event) { return unit::notifications().actionModified(event, TheAction); });
}

void BuildersTest::aCreatedOrModifiedRecordIsCarriedWhole()
{
    QFETCH(Build, build);
    ZELEvent event;
    QVERIFY(build(event));
    const QVariant carried = event.getArguments().first().value;
    if (carried.userType() == unit::typeNamed("Key"))
        QCOMPARE(carried.value<Key>(), TheKey);
    else
        QCOMPARE(carried.value<Action>(), TheAction);
}

void BuildersTest::aDeletedRecordIsCarriedAsItsBareId()
{
    ZELEvent key;
    unit::notifications().keyDeleted(key, qlonglong{1} << 40);
    QCOMPARE(key.getArgument(QStringLiteral("idKey")), QVariant(qlonglong{1} << 40));
    ZELEvent action;
    unit::notifications().actionDeleted(action, qlonglong{1} << 40);
    QCOMPARE(action.getArgument(QStringLiteral("idAction")), QVariant(qlonglong{1} << 40));
}

void BuildersTest::aPressCarriesTheKeyAndTheActionWhole()
{
    ZELEvent event;
    unit::notifications().moduleKeyPressed(event, TheKey, TheAction, true);
    QCOMPARE(event.getArgument(QStringLiteral("key")).value<Key>(), TheKey);
    QCOMPARE(event.getArgument(QStringLiteral("action")).value<Action>(), TheAction);
}

void BuildersTest::anEventWithoutArgumentsTravelsWithoutAny()
{
    unit::EventRecorder recorder;
    ZELEvent full;
    ZELEvent reset;
    QVERIFY(unit::notifications().keysFull(full) && unit::notifications().databaseReset(reset));
    const QList<ZELEvent> sent = recorder.take();
    QCOMPARE(sent.size(), 2);
    QCOMPARE(sent.at(0).getArguments().size(), 0);
    QCOMPARE(sent.at(1).getArguments().size(), 0);
}

void BuildersTest::theRecordArrivesOnTheBus()
{
    unit::EventRecorder recorder;
    ZELEvent created;
    QVERIFY(unit::notifications().keyCreated(created, TheKey));
    ZELEvent deleted;
    QVERIFY(unit::notifications().keyDeleted(deleted, TheKey.idKey));
    const QList<ZELEvent> sent = recorder.take();
    QCOMPARE(sent.size(), 2);
    const QString name = QStringLiteral("idKey");
    QCOMPARE(qdbus_cast<Key>(sent.at(0).getArgument(name)), TheKey);
    QCOMPARE(sent.at(1).getArgument(name), QVariant(TheKey.idKey));
}

void BuildersTest::thePlaceOfAKeyIsItsAddressModuleTypeAndPosition()
{
    const KeyPlace place = placeOf(TheKey);
    QCOMPARE(place.addr, 66);
    QCOMPARE(place.aom_type, 55);
    QCOMPARE(place.key_num, 33);
}

PROGKEYS_TEST_MAIN(BuildersTest)
#include "BuildersTest.moc"
