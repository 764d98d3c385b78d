#include "events/Notifications.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

/// Sending while no bus can be reached.
class NoBusTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aFailedSendIsToldOfFromLevelThreeUpward_data();
    void aFailedSendIsToldOfFromLevelThreeUpward();
    void aBuilderReturnsThatItsEventWasNotSent();
};

void NoBusTest::initTestCase()
{
    unit::loseTheBus();
    registerDBusKey();
    registerDBusAction();
}

void NoBusTest::aFailedSendIsToldOfFromLevelThreeUpward_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("isTold");
    for (int level = 0; level <= 7; ++level)
        QTest::addRow("level %d", level) << level << (level >= 3);
}

void NoBusTest::aFailedSendIsToldOfFromLevelThreeUpward()
{
    QFETCH(int, level);
    QFETCH(bool, isTold);
    ZELEvent event;
    event.setEvtName(QStringLiteral("ACTION_CREATE_NTF"));
    unit::LogCapture log(level);
    QVERIFY(!unit::notifications().sendNotification(event));
    const QStringList line{QStringLiteral("error: event ACTION_CREATE_NTF notification failed")};
    QCOMPARE(log.take(), isTold ? line : QStringList());
}

void NoBusTest::aBuilderReturnsThatItsEventWasNotSent()
{
    unit::LogCapture log(7);
    ZELEvent created;
    QVERIFY(!unit::notifications().keyCreated(created, unit::sampleKey()));
    QCOMPARE(created.getArgument(QStringLiteral("idKey")).value<Key>(), unit::sampleKey());
    ZELEvent reset;
    QVERIFY(!unit::notifications().databaseReset(reset));
    QCOMPARE(log.take(),
             (QStringList{QStringLiteral("error: event KEY_CREATE_NTF notification failed"),
                          QStringLiteral("error: event DB_RESET_NTF notification failed")}));
}

PROGKEYS_TEST_MAIN(NoBusTest)
#include "NoBusTest.moc"
