#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

/// A key of that type and kind of module, stored with an action of its own.
Key storedKey(int type, int aom_type)
{
    Key key = unit::moduleKey(unit::stored(unit::userAction()).idAction, 5);
    key.type = type;
    key.aom_type = aom_type;
    return unit::stored(key);
}

QStringList line(const QString &text)
{
    return {QStringLiteral("error: ") + text};
}

void addRefusedRows()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("aom_type");
    QTest::newRow("a module key of kind 2") << 1 << 2;
    QTest::newRow("a module key of kind 0") << 1 << 0;
    QTest::newRow("a module key without a kind") << 1 << -1;
    QTest::newRow("a key of the set") << 0 << 0;
}

} // namespace

/// Icons and labels that clients set on module keys.
class KeyStatesTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { unit::resetService(); }

    void anIconIsPassedOnUnchecked_data();
    void anIconIsPassedOnUnchecked();
    void anIconNeedsAModuleOfKindOne_data() { addRefusedRows(); }
    void anIconNeedsAModuleOfKindOne();
    void anIconNeedsAKey();
    void anIconNeedsNoAction();

    void aLabelIsPassedOnWithTheShortLabelOfTheAction_data();
    void aLabelIsPassedOnWithTheShortLabelOfTheAction();
    void aLabelNeedsAModuleOfKindOne_data() { addRefusedRows(); }
    void aLabelNeedsAModuleOfKindOne();
    void aLabelNeedsAKey();
    void aLabelNeedsAnAction();

    void aRefusalIsNotToldOfAtLevelTwo();
};

void KeyStatesTest::anIconIsPassedOnUnchecked_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::newRow("on a module key") << 1 << 3 << 4;
    QTest::newRow("on a key of the set that has a module") << 0 << 3 << 4;
    QTest::newRow("at the edges of 32 bits") << 1 << INT_MIN << INT_MAX;
}

void KeyStatesTest::anIconIsPassedOnUnchecked()
{
    QFETCH(int, type);
    QFETCH(int, x);
    QFETCH(int, y);
    const Key key = storedKey(type, 1);
    unit::EventRecorder recorder;
    unit::LogCapture log(6);
    QCOMPARE(unit::service().setIconStateForKey(key.idKey, x, y), 0);
    QCOMPARE(log.take(), QStringList());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(unit::describe(events.first()),
             (QStringList{QStringLiteral("AOM_SET_ICON_PROPERTY_REC"),
                          QStringLiteral("addr: int 2"), QStringLiteral("aom_type: int 1"),
                          QStringLiteral("key_num: int 5"), QStringLiteral("icon_x: int %1").arg(x),
                          QStringLiteral("icon_y: int %1").arg(y)}));
    QCOMPARE(unit::service().getAllProgrammableKeys(), ListKey{key});
}

void KeyStatesTest::anIconNeedsAModuleOfKindOne()
{
    QFETCH(int, type);
    QFETCH(int, aom_type);
    const Key key = storedKey(type, aom_type);
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    QCOMPARE(unit::service().setIconStateForKey(key.idKey, 1, 2), -2);
    QCOMPARE(log.take(), line(QStringLiteral("In setIconStateForKey, not an aom key, id[1]")));
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyStatesTest::anIconNeedsAKey()
{
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    QCOMPARE(unit::service().setIconStateForKey(qlonglong{1} << 40, 1, 2), -2);
    QCOMPARE(log.take(),
             line(QStringLiteral("In setIconStateForKey, not an aom key, id[1099511627776]")));
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyStatesTest::anIconNeedsNoAction()
{
    const Key key = unit::stored(unit::moduleKey(99, 5));
    unit::EventRecorder recorder;
    QCOMPARE(unit::service().setIconStateForKey(key.idKey, 1, 2), 0);
    QCOMPARE(recorder.takeNames(), QStringList{QStringLiteral("AOM_SET_ICON_PROPERTY_REC")});
}

void KeyStatesTest::aLabelIsPassedOnWithTheShortLabelOfTheAction_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("state");
    QTest::newRow("on a module key") << 1 << 3;
    QTest::newRow("on a key of the set that has a module") << 0 << 0;
    QTest::newRow("at the edge of 32 bits") << 1 << INT_MIN;
}

void KeyStatesTest::aLabelIsPassedOnWithTheShortLabelOfTheAction()
{
    QFETCH(int, type);
    QFETCH(int, state);
    const Key key = storedKey(type, 1);
    unit::EventRecorder recorder;
    unit::LogCapture log(6);
    QCOMPARE(unit::service().setLabelStateForKey(key.idKey, state), 0);
    QCOMPARE(log.take(), QStringList());
    const QList<ZELEvent> events = recorder.take();
    QCOMPARE(events.size(), 1);
    QCOMPARE(
        unit::describe(events.first()),
        (QStringList{QStringLiteral("AOM_SET_LABEL_PROPERTY_REC"), QStringLiteral("addr: int 2"),
                     QStringLiteral("aom_type: int 1"), QStringLiteral("key_num: int 5"),
                     QStringLiteral("label_state: int %1").arg(state),
                     QStringLiteral("label_str: QString Rec")}));
}

void KeyStatesTest::aLabelNeedsAModuleOfKindOne()
{
    QFETCH(int, type);
    QFETCH(int, aom_type);
    const Key key = storedKey(type, aom_type);
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    QCOMPARE(unit::service().setLabelStateForKey(key.idKey, 1), -2);
    QCOMPARE(log.take(), line(QStringLiteral("In setLabelStateForKey, not an aom key, id[1]")));
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyStatesTest::aLabelNeedsAKey()
{
    unit::LogCapture log(3);
    QCOMPARE(unit::service().setLabelStateForKey(-1, 1), -2);
    QCOMPARE(log.take(), line(QStringLiteral("In setLabelStateForKey, not an aom key, id[-1]")));
}

void KeyStatesTest::aLabelNeedsAnAction()
{
    const Key key = unit::stored(unit::moduleKey(99, 5));
    unit::EventRecorder recorder;
    unit::LogCapture log(3);
    QCOMPARE(unit::service().setLabelStateForKey(key.idKey, 1), -2);
    QCOMPARE(log.take(), line(QStringLiteral("In setLabelStateForKey, internal error action does "
                                             "not exists, id[99]")));
    QCOMPARE(recorder.takeNames(), QStringList());
}

void KeyStatesTest::aRefusalIsNotToldOfAtLevelTwo()
{
    const Key withoutAction = unit::stored(unit::moduleKey(99, 5));
    unit::LogCapture log(2);
    QCOMPARE(unit::service().setIconStateForKey(50, 1, 2), -2);
    QCOMPARE(unit::service().setLabelStateForKey(50, 1), -2);
    QCOMPARE(unit::service().setLabelStateForKey(withoutAction.idKey, 1), -2);
    QCOMPARE(log.take(), QStringList());
}

PROGKEYS_TEST_MAIN(KeyStatesTest)
#include "KeyStatesTest.moc"
