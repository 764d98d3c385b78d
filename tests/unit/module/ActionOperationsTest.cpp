#include "storage/OtherProgram.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDBusArgument>

namespace {

void refuse(const char *operation)
{
    OtherProgram().execute({QStringLiteral("CREATE TRIGGER refuse BEFORE %1 ON ACTION "
                                           "BEGIN SELECT RAISE(ABORT, 'no'); END")
                                .arg(QLatin1String(operation))});
}

/// The label request for the module key at this position.
QStringList labelRequest(int position, const QString &label)
{
    return {QStringLiteral("AOM_SET_LABEL_PROPERTY_REC"),
            QStringLiteral("addr: int 2"),
            QStringLiteral("aom_type: int 1"),
            QStringLiteral("key_num: int %1").arg(position),
            QStringLiteral("label_state: int 1"),
            QStringLiteral("label_str: QString %1").arg(label)};
}

QList<QStringList> described(const QList<ZELEvent> &events)
{
    QList<QStringList> texts;
    for (const ZELEvent &event : events)
        texts.append(unit::describe(event));
    return texts;
}

using Change = void (*)(Action &);

} // namespace

Q_DECLARE_METATYPE(Change)

/// Adding and modifying actions.
class ActionOperationsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { unit::resetService(); }

    void anActionWithoutADmIdIsRemovable_data();
    void anActionWithoutADmIdIsRemovable();

    void anAddedActionIsAnnouncedWithItsNewId();
    void theCodeOfARefusedInsertionIsTheAnswer();

    void labelsGoToTheModuleKeysOfTheActionInTheirOrder();
    void noModuleKeyMeansNoLabel();

    void aModifiedActionIsAnnouncedWhole();
    void onlyAnotherShortLabelIsPushedToTheModules_data();
    void onlyAnotherShortLabelIsPushedToTheModules();
    void anUnknownActionIsNotModified_data();
    void anUnknownActionIsNotModified();
    void theCodeOfAFailedUpdateIsPassedOnAndTold();
    void theReservedActionMayBeModified();
};

void ActionOperationsTest::anActionWithoutADmIdIsRemovable_data()
{
    QTest::addColumn<QString>("dmId");
    QTest::addColumn<bool>("isRemovable");
    QTest::newRow("an action of a user") << QString() << true;
    QTest::newRow("an action with an empty dmId") << QStringLiteral("") << true;
    QTest::newRow("a provisioned action") << QStringLiteral("D1") << false;
}

void ActionOperationsTest::anActionWithoutADmIdIsRemovable()
{
    QFETCH(QString, dmId);
    QFETCH(bool, isRemovable);
    Action action = unit::sampleAction();
    action.dmId = dmId;
    unit::LogCapture log(7);
    QCOMPARE(ZelProgrammableKeys::isActionRemovable(action), isRemovable);
    QCOMPARE(log.take(), QStringList());
}

void ActionOperationsTest::anAddedActionIsAnnouncedWithItsNewId()
{
    unit::EventRecorder recorder;
    Action action = unit::sampleAction();
    action.idAction = 77;
    QCOMPARE(unit::service().addAction(action), qlonglong{1});
    action.idAction = 1;
    QCOMPARE(unit::service().getAction(1), ListAction{action});
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.first().getEvtName(), QStringLiteral("ACTION_CREATE_NTF"));
    QCOMPARE(qdbus_cast<Action>(events.first().getArgument(QStringLiteral("idAction"))), action);
}

void ActionOperationsTest::theCodeOfARefusedInsertionIsTheAnswer()
{
    refuse("INSERT");
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().addAction(unit::userAction()), qlonglong{-3});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionOperationsTest::labelsGoToTheModuleKeysOfTheActionInTheirOrder()
{
    unit::stored(unit::moduleKey(5, 30));
    unit::stored(unit::setKey(5));
    unit::stored(unit::moduleKey(5, 10));
    unit::stored(unit::moduleKey(6, 40));
    unit::stored(unit::moduleKey(5, 20));
    unit::EventRecorder recorder;
    const QString label = QStringLiteral("L");
    unit::service().updateAomLabelsForAction(5, label);
    QCOMPARE(described(recorder.take()),
             (QList<QStringList>{labelRequest(30, label), labelRequest(10, label),
                                 labelRequest(20, label)}));
}

void ActionOperationsTest::noModuleKeyMeansNoLabel()
{
    unit::stored(unit::setKey(5));
    unit::EventRecorder recorder;
    unit::service().updateAomLabelsForAction(5, QStringLiteral("L"));
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionOperationsTest::aModifiedActionIsAnnouncedWhole()
{
    Action action = unit::stored(unit::userAction());
    action.label = QStringLiteral("other");
    unit::EventRecorder recorder;
    unit::LogCapture log(6);
    QCOMPARE(unit::service().modifyAction(action), 0);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(unit::service().getAction(action.idAction), ListAction{action});
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(events.first().getEvtName(), QStringLiteral("ACTION_MODIFY_NTF"));
    QCOMPARE(qdbus_cast<Action>(events.first().getArgument(QStringLiteral("idAction"))), action);
}

void ActionOperationsTest::onlyAnotherShortLabelIsPushedToTheModules_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<int>("labels");
    const auto row = [](const char *name, Change change, int labels) {
        QTest::newRow(name) << change << labels;
    };
    row(
        "nothing", [](Action &) {}, 0);
    row(
        "another type", [](Action &action) { ++action.type; }, 0);
    row(
        "another action", [](Action &action) { action.action.clear(); }, 0);
    row(
        "another web application", [](Action &action) { action.webAppName.clear(); }, 0);
    row(
        "other arguments", [](Action &action) { action.arguments.clear(); }, 0);
    row(
        "another label", [](Action &action) { action.label.clear(); }, 0);
    row(
        "another dmId", [](Action &action) { action.dmId = QStringLiteral("D1"); }, 0);
    row(
        "another short label", [](Action &action) { action.shortLabel = QStringLiteral("rec"); },
        3);
    row(
        "no short label any more", [](Action &action) { action.shortLabel.clear(); }, 3);
}

void ActionOperationsTest::onlyAnotherShortLabelIsPushedToTheModules()
{
    QFETCH(Change, change);
    QFETCH(int, labels);
    Action action = unit::stored(unit::userAction());
    unit::stored(unit::setKey(action.idAction));
    QList<QStringList> expected;
    change(action);
    for (int position = 0; position < 3; ++position) {
        unit::stored(unit::moduleKey(action.idAction, position));
        expected.append(labelRequest(position, action.shortLabel));
    }
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().modifyAction(action), 0);
    QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.takeFirst().getEvtName(), QStringLiteral("ACTION_MODIFY_NTF"));
    QCOMPARE(described(events), expected.mid(0, labels));
}

void ActionOperationsTest::anUnknownActionIsNotModified_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("level 2 is too low for the line") << 2 << QStringList();
    QTest::newRow("level 3 suffices for it")
        << 3 << QStringList{QStringLiteral("error: ZelProgrammableKeys::modifyAction(2) : fail !")};
}

void ActionOperationsTest::anUnknownActionIsNotModified()
{
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    Action unknown = unit::userAction();
    unknown.idAction = 99;
    unit::EventRecorder recorder;
    unit::LogCapture log(level);
    QCOMPARE(unit::service().modifyAction(unknown), -2);
    QCOMPARE(log.take(), lines);
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionOperationsTest::theCodeOfAFailedUpdateIsPassedOnAndTold()
{
    Action action = unit::stored(unit::userAction());
    unit::stored(unit::moduleKey(action.idAction, 5));
    action.shortLabel = QStringLiteral("other");
    refuse("UPDATE");
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    QCOMPARE(unit::service().modifyAction(action), -3);
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 2); // the statement's own line comes first
    QCOMPARE(lines.last(), QStringLiteral("error: ZelProgrammableKeys::modifyAction(1) : fail !"));
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionOperationsTest::theReservedActionMayBeModified()
{
    Action reserved = unit::userAction();
    reserved.idAction = -1;
    unit::stored(unit::moduleKey(-1, 5));
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().modifyAction(reserved), 0);
    QCOMPARE(unit::service().getAllActions(), ListAction{reserved});
    QCOMPARE(recorder.takeNames(), (QStringList{QStringLiteral("ACTION_MODIFY_NTF"),
                                                QStringLiteral("AOM_SET_LABEL_PROPERTY_REC")}));
}

PROGKEYS_TEST_MAIN(ActionOperationsTest)
#include "ActionOperationsTest.moc"
