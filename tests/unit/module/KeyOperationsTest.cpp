#include "storage/OtherProgram.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDBusArgument>

namespace {

void refuse(const char *operation)
{
    OtherProgram().execute({QStringLiteral("CREATE TRIGGER refuse BEFORE %1 ON KEY "
                                           "BEGIN SELECT RAISE(ABORT, 'no'); END")
                                .arg(QLatin1String(operation))});
}

QStringList debugLines(const QStringList &texts)
{
    QStringList lines;
    for (const QString &text : texts)
        lines.append(QStringLiteral("debug: ") + text);
    return lines;
}

} // namespace

/// Creating, modifying and deleting keys; there is no SettingsManager here, and so no limit.
class KeyOperationsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aKeyWithoutADmIdIsRemovable_data();
    void aKeyWithoutADmIdIsRemovable();
    void removabilityIsToldInThreeLinesAtLevelSeven();
    void removabilityIsNotToldBelowLevelSeven();

    void aCreatedKeyIsAnnouncedWithItsNewId();
    void aCreatedModuleKeyHasItsIconReset();
    void aKeyOfAMissingActionIsRefusedAndNamed_data();
    void aKeyOfAMissingActionIsRefusedAndNamed();
    void aRefusedInsertionAnswersMinusTwoAndSendsNothing();

    void aModifiedKeyIsAnnouncedWhole();
    void onlyAnotherIconOfAModuleKeyIsReset_data();
    void onlyAnotherIconOfAModuleKeyIsReset();
    void anUnknownKeyIsNotModified();
    void theCodeOfAFailedUpdateIsPassedOn();

    void aDeletionIsToldStepByStep();
    void anUnknownKeyIsToldOfInTwoLines();
    void aProvisionedKeyStays();
    void theCodeOfAFailedDeletionIsPassedOn();

private:
    Action m_action;
};

void KeyOperationsTest::init()
{
    unit::resetService();
    m_action = unit::stored(unit::userAction());
}

void KeyOperationsTest::aKeyWithoutADmIdIsRemovable_data()
{
    QTest::addColumn<QString>("dmId");
    QTest::addColumn<bool>("isRemovable");
    QTest::newRow("a key of a user") << QString() << true;
    QTest::newRow("a key with an empty dmId") << QStringLiteral("") << true;
    QTest::newRow("a provisioned key") << QStringLiteral("D1") << false;
    QTest::newRow("a dmId of one blank") << QStringLiteral(" ") << false;
}

void KeyOperationsTest::aKeyWithoutADmIdIsRemovable()
{
    QFETCH(QString, dmId);
    QFETCH(bool, isRemovable);
    Key key = unit::sampleKey();
    key.dmId = dmId;
    QCOMPARE(ZelProgrammableKeys::isProgrammableKeyRemovable(key), isRemovable);
}

void KeyOperationsTest::removabilityIsToldInThreeLinesAtLevelSeven()
{
    unit::LogCapture log(7);
    Key key = unit::sampleKey();
    key.dmId = QStringLiteral("%1 %2");
    ZelProgrammableKeys::isProgrammableKeyRemovable(key);
    QCOMPARE(log.take(), debugLines({QStringLiteral("isProgrammableKeyRemovable : id=11"),
                                     QStringLiteral("isProgrammableKeyRemovable : idDM=%1 %2"),
                                     QStringLiteral("isProgrammableKeyRemovable : value=0")}));
    key.dmId.clear();
    ZelProgrammableKeys::isProgrammableKeyRemovable(key);
    QCOMPARE(log.take(), debugLines({QStringLiteral("isProgrammableKeyRemovable : id=11"),
                                     QStringLiteral("isProgrammableKeyRemovable : idDM="),
                                     QStringLiteral("isProgrammableKeyRemovable : value=1")}));
}

void KeyOperationsTest::removabilityIsNotToldBelowLevelSeven()
{
    unit::LogCapture log(6);
    ZelProgrammableKeys::isProgrammableKeyRemovable(unit::sampleKey());
    QCOMPARE(log.take(), QStringList());
}

void KeyOperationsTest::aCreatedKeyIsAnnouncedWithItsNewId()
{
    unit::EventRecorder recorder;
    Key key = unit::setKey(m_action.idAction);
    key.idKey = 77;
    QCOMPARE(unit::service().createProgrammableKey(key), qlonglong{1});
    key.idKey = 1;
    QCOMPARE(unit::service().getProgrammableKey(1), ListKey{key});
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.first().getEvtName(), QStringLiteral("KEY_CREATE_NTF"));
    QCOMPARE(qdbus_cast<Key>(events.first().getArgument(QStringLiteral("idKey"))), key);
}

void KeyOperationsTest::aCreatedModuleKeyHasItsIconReset()
{
    unit::EventRecorder recorder;
    unit::service().createProgrammableKey(unit::moduleKey(m_action.idAction, 5));
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 2);
    QCOMPARE(events.first().getEvtName(), QStringLiteral("KEY_CREATE_NTF"));
    QCOMPARE(
        unit::describe(events.last()),
        (QStringList{QStringLiteral("AOM_SET_ICON_PROPERTY_REC"), QStringLiteral("addr: int 2"),
                     QStringLiteral("aom_type: int 1"), QStringLiteral("key_num: int 5"),
                     QStringLiteral("icon_x: int 0"), QStringLiteral("icon_y: int 0")}));
}

void KeyOperationsTest::aKeyOfAMissingActionIsRefusedAndNamed_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("level 2 is too low for the line") << 2 << QStringList();
    QTest::newRow("level 3 suffices for it")
        << 3 << QStringList{QStringLiteral("error: Action of id 7 does not exist")};
}

void KeyOperationsTest::aKeyOfAMissingActionIsRefusedAndNamed()
{
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    const Key stored = unit::stored(unit::setKey(m_action.idAction));
    Key lost = stored;
    lost.idAction = 7;
    unit::EventRecorder recorder;
    unit::LogCapture log(level);
    QCOMPARE(unit::service().createProgrammableKey(lost), qlonglong{-2});
    QCOMPARE(log.take(), lines);
    QCOMPARE(unit::service().modifyProgrammableKey(lost), -2);
    QCOMPARE(log.take(), lines);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{stored});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyOperationsTest::aRefusedInsertionAnswersMinusTwoAndSendsNothing()
{
    refuse("INSERT");
    unit::EventRecorder recorder;
    const Key key = unit::moduleKey(m_action.idAction, 5);
    QCOMPARE(unit::service().createProgrammableKey(key), qlonglong{-2});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyOperationsTest::aModifiedKeyIsAnnouncedWhole()
{
    Key key = unit::stored(unit::setKey(m_action.idAction));
    key.container = QStringLiteral("other");
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().modifyProgrammableKey(key), 0);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.first().getEvtName(), QStringLiteral("KEY_MODIFY_NTF"));
    QCOMPARE(qdbus_cast<Key>(events.first().getArgument(QStringLiteral("idKey"))), key);
}

void KeyOperationsTest::onlyAnotherIconOfAModuleKeyIsReset_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<int>("events");
    QTest::newRow("a module key with another icon") << 1 << QStringLiteral("moon") << 2;
    QTest::newRow("a module key without an icon now") << 1 << QString() << 2;
    QTest::newRow("a module key with the same icon") << 1 << QStringLiteral("star") << 1;
    QTest::newRow("a key of the set with another icon") << 0 << QStringLiteral("moon") << 1;
}

void KeyOperationsTest::onlyAnotherIconOfAModuleKeyIsReset()
{
    QFETCH(int, type);
    QFETCH(QString, icon);
    QFETCH(int, events);
    Key key = unit::stored(unit::moduleKey(m_action.idAction, 5));
    key.type = type;
    key.icon = icon;
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().modifyProgrammableKey(key), 0);
    const QStringList both{QStringLiteral("KEY_MODIFY_NTF"),
                           QStringLiteral("AOM_SET_ICON_PROPERTY_REC")};
    QCOMPARE(recorder.takeNames(), both.mid(0, events));
}

void KeyOperationsTest::anUnknownKeyIsNotModified()
{
    unit::EventRecorder recorder;
    Key unknown = unit::moduleKey(m_action.idAction, 5);
    unknown.idKey = 99;
    QCOMPARE(unit::service().modifyProgrammableKey(unknown), -2);
    QCOMPARE(recorder.takeNames(), QStringList());
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey());
}

void KeyOperationsTest::theCodeOfAFailedUpdateIsPassedOn()
{
    const Key key = unit::stored(unit::moduleKey(m_action.idAction, 5));
    refuse("UPDATE");
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().modifyProgrammableKey(key), -3);
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyOperationsTest::aDeletionIsToldStepByStep()
{
    const Key key = unit::stored(unit::setKey(m_action.idAction));
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    QCOMPARE(unit::service().deleteProgrammableKey(key.idKey), 0);
    QCOMPARE(log.take(),
             debugLines({QStringLiteral("deleteProgrammableKey : idKey=1"),
                         QStringLiteral("deleteProgrammableKey : listKey.size=1"),
                         QStringLiteral("deleteProgrammableKey : get key from the list"),
                         QStringLiteral("deleteProgrammableKey : id=1"),
                         QStringLiteral("isProgrammableKeyRemovable : id=1"),
                         QStringLiteral("isProgrammableKeyRemovable : idDM="),
                         QStringLiteral("isProgrammableKeyRemovable : value=1"),
                         QStringLiteral("deleteProgrammableKey : delete key from database"),
                         QStringLiteral("event KEY_DELETE_NTF sent")}));
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(unit::describe(events.first()),
             (QStringList{QStringLiteral("KEY_DELETE_NTF"), QStringLiteral("idKey: qlonglong 1")}));
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey());
}

void KeyOperationsTest::anUnknownKeyIsToldOfInTwoLines()
{
    unit::LogCapture log(7);
    QCOMPARE(unit::service().deleteProgrammableKey(-5), -2);
    QCOMPARE(log.take(), debugLines({QStringLiteral("deleteProgrammableKey : idKey=-5"),
                                     QStringLiteral("deleteProgrammableKey : listKey.size=0")}));
}

void KeyOperationsTest::aProvisionedKeyStays()
{
    Key key = unit::setKey(m_action.idAction);
    key.dmId = QStringLiteral("D1");
    key = unit::stored(key);
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().deleteProgrammableKey(key.idKey), -2);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyOperationsTest::theCodeOfAFailedDeletionIsPassedOn()
{
    const Key key = unit::stored(unit::setKey(m_action.idAction));
    refuse("DELETE");
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().deleteProgrammableKey(key.idKey), -3);
    QCOMPARE(recorder.takeNames(), QStringList());
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
}

PROGKEYS_TEST_MAIN(KeyOperationsTest)
#include "KeyOperationsTest.moc"
