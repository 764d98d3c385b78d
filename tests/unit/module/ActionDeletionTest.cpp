#include "storage/OtherProgram.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

Key provisioned(Key key)
{
    key.dmId = QStringLiteral("D1");
    return key;
}

QStringList events(int keys, int actions)
{
    QStringList names;
    for (int key = 0; key < keys; ++key)
        names.append(QStringLiteral("KEY_DELETE_NTF"));
    for (int action = 0; action < actions; ++action)
        names.append(QStringLiteral("ACTION_DELETE_NTF"));
    return names;
}

} // namespace

class ActionDeletionTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { unit::resetService(); }

    void anActionTakesItsKeysAlongBeforeItIsAnnounced();
    void theKeysGoInTheOrderOfTheirIds();
    void aProvisionedKeyStaysBoundToTheActionThatIsGone();
    void theReservedActionCannotBeDeleted_data();
    void theReservedActionCannotBeDeleted();
    void theReservedActionCannotBeDeletedWithoutItsRowEither();
    void anUnknownActionIsRefusedWithoutALine();
    void aProvisionedActionIsRefusedWithoutALineAndItsKeysStay();
    void theCodeOfAFailedDeletionIsPassedOnAndNoKeyIsTouched();
    void aKeyThatCannotBeDeletedDoesNotStopTheRest();
};

void ActionDeletionTest::anActionTakesItsKeysAlongBeforeItIsAnnounced()
{
    const Action action = unit::stored(unit::userAction());
    unit::stored(unit::setKey(action.idAction));
    const Key other = unit::stored(unit::setKey(-1));
    unit::stored(unit::moduleKey(action.idAction, 5));
    unit::EventRecorder recorder;
    unit::LogCapture log(6);
    QCOMPARE(unit::service().deleteAction(action.idAction), 0);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{other});
    QCOMPARE(unit::service().getAllActions().size(), 1);
    const QList<ZELEvent> sent = recorder.take();
    QCOMPARE(sent.size(), 3);
    QCOMPARE(unit::describe(sent.last()), (QStringList{QStringLiteral("ACTION_DELETE_NTF"),
                                                       QStringLiteral("idAction: qlonglong 1")}));
}

void ActionDeletionTest::theKeysGoInTheOrderOfTheirIds()
{
    const Action action = unit::stored(unit::userAction());
    QVariantList ids;
    for (int number = 0; number < 4; ++number)
        ids.append(unit::stored(unit::setKey(action.idAction)).idKey);
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().deleteAction(action.idAction), 0);
    QList<ZELEvent> sent = recorder.take();
    sent.removeLast();
    QVariantList deleted;
    for (const ZELEvent &event : sent)
        deleted.append(event.getArgument(QStringLiteral("idKey")));
    QCOMPARE(deleted, ids);
}

void ActionDeletionTest::aProvisionedKeyStaysBoundToTheActionThatIsGone()
{
    const Action action = unit::stored(unit::userAction());
    unit::stored(unit::setKey(action.idAction));
    const Key kept = unit::stored(provisioned(unit::setKey(action.idAction)));
    unit::stored(unit::setKey(action.idAction));
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().deleteAction(action.idAction), 0);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{kept});
    QCOMPARE(recorder.takeNames(), events(2, 1));
}

void ActionDeletionTest::theReservedActionCannotBeDeleted_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("level 2 is too low for the line") << 2 << QStringList();
    QTest::newRow("level 3 suffices for it")
        << 3
        << QStringList{QStringLiteral("error: Action of id -1 is read only and reserved. "
                                      "Deletion is forbidden.")};
}

void ActionDeletionTest::theReservedActionCannotBeDeleted()
{
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    const Key key = unit::stored(unit::setKey(-1));
    unit::EventRecorder recorder;
    unit::LogCapture log(level);
    QCOMPARE(unit::service().deleteAction(-1), -2);
    QCOMPARE(log.take(), lines);
    QCOMPARE(unit::service().getAction(-1).size(), 1);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionDeletionTest::theReservedActionCannotBeDeletedWithoutItsRowEither()
{
    OtherProgram().execute({QStringLiteral("DELETE FROM ACTION")});
    unit::LogCapture log(3);
    QCOMPARE(unit::service().deleteAction(-1), -2);
    QCOMPARE(log.take().size(), 1);
}

void ActionDeletionTest::anUnknownActionIsRefusedWithoutALine()
{
    const Key key = unit::stored(unit::setKey(99));
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    QCOMPARE(unit::service().deleteAction(99), -2);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionDeletionTest::aProvisionedActionIsRefusedWithoutALineAndItsKeysStay()
{
    const Action action = unit::stored(unit::sampleAction());
    const Key key = unit::stored(unit::setKey(action.idAction));
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    QCOMPARE(unit::service().deleteAction(action.idAction), -2);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(unit::service().getAction(action.idAction), ListAction{action});
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionDeletionTest::theCodeOfAFailedDeletionIsPassedOnAndNoKeyIsTouched()
{
    const Action action = unit::stored(unit::userAction());
    const Key key = unit::stored(unit::setKey(action.idAction));
    OtherProgram().execute({QStringLiteral("CREATE TRIGGER refuse BEFORE DELETE ON ACTION "
                                           "BEGIN SELECT RAISE(ABORT, 'no'); END")});
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().deleteAction(action.idAction), -3);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
    QCOMPARE(recorder.takeNames(), QStringList());
}

void ActionDeletionTest::aKeyThatCannotBeDeletedDoesNotStopTheRest()
{
    const Action action = unit::stored(unit::userAction());
    const Key stuck = unit::stored(unit::setKey(action.idAction));
    unit::stored(unit::setKey(action.idAction));
    OtherProgram().execute({QStringLiteral("CREATE TRIGGER refuse BEFORE DELETE ON KEY "
                                           "WHEN OLD.idKey = %1 "
                                           "BEGIN SELECT RAISE(ABORT, 'no'); END")
                                .arg(stuck.idKey)});
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().deleteAction(action.idAction), 0);
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{stuck});
    QCOMPARE(recorder.takeNames(), events(1, 1));
}

PROGKEYS_TEST_MAIN(ActionDeletionTest)
#include "ActionDeletionTest.moc"
