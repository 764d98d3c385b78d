#include "events/Notifications.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

/// Something that no bus has a type for.
struct Unsendable
{
    int value = 0;
};
Q_DECLARE_METATYPE(Unsendable)

namespace {

ZELEvent eventNamed(const char *name)
{
    ZELEvent event;
    event.setEvtName(QLatin1String(name));
    return event;
}

ZELEvent unsendableEvent(const char *name)
{
    ZELEvent event = eventNamed(name);
    event.addArgument(QVariant::fromValue(Unsendable()), QStringLiteral("what"), true);
    return event;
}

} // namespace

class SendNotificationTest : public QObject
{
    Q_OBJECT

private slots:
    void aSentEventIsToldOfFromLevelSevenUpward_data();
    void aSentEventIsToldOfFromLevelSevenUpward();
    void aRefusedEventIsToldOfFromLevelThreeUpward_data();
    void aRefusedEventIsToldOfFromLevelThreeUpward();
    void aRefusedEventDoesNotReachTheBusAndTheNextOneDoes();
    void anEventMayBeSentTwice();
};

void SendNotificationTest::aSentEventIsToldOfFromLevelSevenUpward_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    for (int level = 0; level < 7; ++level)
        QTest::addRow("level %d is too low", level) << level << QStringList();
    QTest::newRow("level 7 suffices")
        << 7 << QStringList{QStringLiteral("debug: event KEY_DELETE_NTF sent")};
}

void SendNotificationTest::aSentEventIsToldOfFromLevelSevenUpward()
{
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    unit::LogCapture log(level);
    QVERIFY(unit::notifications().sendNotification(eventNamed("KEY_DELETE_NTF")));
    QCOMPARE(log.take(), lines);
}

void SendNotificationTest::aRefusedEventIsToldOfFromLevelThreeUpward_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    for (int level = 0; level < 3; ++level)
        QTest::addRow("level %d is too low", level) << level << QStringList();
    const QStringList line{QStringLiteral("error: event ACTION_CREATE_NTF notification failed")};
    for (int level = 3; level <= 7; ++level)
        QTest::addRow("level %d suffices", level) << level << line;
}

void SendNotificationTest::aRefusedEventIsToldOfFromLevelThreeUpward()
{
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    unit::LogCapture log(level);
    QVERIFY(!unit::notifications().sendNotification(unsendableEvent("ACTION_CREATE_NTF")));
    QCOMPARE(log.take(), lines);
}

void SendNotificationTest::aRefusedEventDoesNotReachTheBusAndTheNextOneDoes()
{
    unit::EventRecorder recorder;
    QVERIFY(!unit::notifications().sendNotification(unsendableEvent("REFUSED")));
    QVERIFY(unit::notifications().sendNotification(eventNamed("SENT")));
    QCOMPARE(recorder.takeNames(), QStringList{QStringLiteral("SENT")});
}

void SendNotificationTest::anEventMayBeSentTwice()
{
    unit::EventRecorder recorder;
    const ZELEvent event = eventNamed("AGAIN");
    QVERIFY(unit::notifications().sendNotification(event));
    QVERIFY(unit::notifications().sendNotification(event));
    QCOMPARE(recorder.takeNames().size(), 2);
}

PROGKEYS_TEST_MAIN(SendNotificationTest)
#include "SendNotificationTest.moc"
