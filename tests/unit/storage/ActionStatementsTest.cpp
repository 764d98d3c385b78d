#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

ProgKeysDatabase &database()
{
    return unit::database();
}

Action store(void (*change)(Action &) = [](Action &) {})
{
    Action action = unit::sampleAction();
    change(action);
    action.idAction = database().insertAction(action).id;
    return action;
}

Action reservedAction()
{
    Action action;
    action.type = -1;
    return action;
}

} // namespace

class ActionStatementsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { database().resetTables(); }

    void anInsertedActionGetsTheNextIdAndNoOther();
    void eachFieldIsStoredInTheColumnOfItsName();
    void nullTextsAreStoredAsEmptyOnes();
    void anUpdateReplacesEveryColumnButTheId();
    void anUpdateOfAnUnknownActionIsToldByItsCode();
    void anUpdateThatChangesNothingIsASuccess();
    void aDeletedActionIsGoneAndTheOthersStay();
    void aDeletionOfAnUnknownActionIsToldByItsCode();
    void anActionIsReadByItsId();
    void theFirstActionIsReadByItsExactProvisioningIdentifier();
    void theFirstActionOfUsersIsReadByTheEmptyIdentifier();
    void allActionsAreReadWithTheReservedOneAmongThem();
};

void ActionStatementsTest::anInsertedActionGetsTheNextIdAndNoOther()
{
    const Insertion first = database().insertAction(unit::sampleAction());
    QCOMPARE(first.code, 0);
    QCOMPARE(first.id, qlonglong{1});
    QCOMPARE(database().insertAction(unit::sampleAction()).id, qlonglong{2});
    QCOMPARE(OtherProgram().column(QStringLiteral("SELECT idAction FROM ACTION")),
             (QVariantList{-1, 1, 2}));
}

void ActionStatementsTest::eachFieldIsStoredInTheColumnOfItsName()
{
    store();
    QCOMPARE(
        OtherProgram().row(
            QStringLiteral("SELECT idAction, dmId, type, action, webAppName, arguments, "
                           "label, shortLabel FROM ACTION WHERE idAction = 1")),
        (QVariantList{1, QStringLiteral("dm"), 22, QStringLiteral("call"), QStringLiteral("portal"),
                      QStringLiteral("501"), QStringLiteral("Reception"), QStringLiteral("Rec")}));
}

void ActionStatementsTest::nullTextsAreStoredAsEmptyOnes()
{
    const Insertion inserted = database().insertAction(Action());
    const QString isEmpty = QStringLiteral(
        "SELECT typeof(dmId || action || webAppName || arguments || label || shortLabel) = 'text' "
        "AND length(dmId || action || webAppName || arguments || label || shortLabel) = 0 "
        "FROM ACTION WHERE idAction = 1");
    QCOMPARE(OtherProgram().value(isEmpty), QVariant(1));

    Action changed;
    changed.idAction = inserted.id;
    QCOMPARE(database().updateAction(changed), 0);
    QCOMPARE(OtherProgram().value(isEmpty), QVariant(1));
}

void ActionStatementsTest::anUpdateReplacesEveryColumnButTheId()
{
    store();
    const Action other = store();
    Action changed;
    changed.idAction = 1;
    changed.dmId = QStringLiteral("d");
    changed.type = 2;
    changed.action = QStringLiteral("a");
    changed.webAppName = QStringLiteral("w");
    changed.arguments = QStringLiteral("r");
    changed.label = QStringLiteral("l");
    changed.shortLabel = QStringLiteral("s");
    QCOMPARE(database().updateAction(changed), 0);
    QCOMPARE(database().allActions(), (ListAction{reservedAction(), changed, other}));
}

void ActionStatementsTest::anUpdateOfAnUnknownActionIsToldByItsCode()
{
    Action unknown = unit::sampleAction();
    unknown.idAction = 5;
    unit::LogCapture log(7);
    QCOMPARE(database().updateAction(unknown), -2);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(database().allActions(), ListAction{reservedAction()});
}

void ActionStatementsTest::anUpdateThatChangesNothingIsASuccess()
{
    QCOMPARE(database().updateAction(store()), 0);
}

void ActionStatementsTest::aDeletedActionIsGoneAndTheOthersStay()
{
    const Action first = store();
    const Action second = store();
    QCOMPARE(database().deleteAction(first.idAction), 0);
    QCOMPARE(database().allActions(), (ListAction{reservedAction(), second}));
}

void ActionStatementsTest::aDeletionOfAnUnknownActionIsToldByItsCode()
{
    unit::LogCapture log(7);
    QCOMPARE(database().deleteAction(5), -2);
    QCOMPARE(log.take(), QStringList());
}

void ActionStatementsTest::anActionIsReadByItsId()
{
    store();
    const Action second = store([](Action &action) { action.label = QStringLiteral("other"); });
    QCOMPARE(database().action(second.idAction), ListAction{second});
    QCOMPARE(database().action(-1), ListAction{reservedAction()});
    QCOMPARE(database().action(99), ListAction());
}

void ActionStatementsTest::theFirstActionIsReadByItsExactProvisioningIdentifier()
{
    const Action first = store();
    store([](Action &action) { action.dmId = QStringLiteral("DM"); });
    store([](Action &action) { action.label = QStringLiteral("again"); });
    QVERIFY(database().actionWithDmId(QStringLiteral("dm")) == first);
    QVERIFY(!database().actionWithDmId(QStringLiteral("d%")));
}

void ActionStatementsTest::theFirstActionOfUsersIsReadByTheEmptyIdentifier()
{
    store();
    QVERIFY(database().actionWithDmId(QString()) == reservedAction());
    QCOMPARE(database().deleteAction(-1), 0);
    const Action users = store([](Action &action) { action.dmId.clear(); });
    QVERIFY(database().actionWithDmId(QString()) == users);
}

void ActionStatementsTest::allActionsAreReadWithTheReservedOneAmongThem()
{
    QCOMPARE(database().allActions(), ListAction{reservedAction()});
    const Action first = store();
    QCOMPARE(database().allActions(), (ListAction{reservedAction(), first}));
}

PROGKEYS_TEST_MAIN(ActionStatementsTest)
#include "ActionStatementsTest.moc"
