#include "events/Notifications.h"
#include "support/LogCapture.h"
#include "support/TestProgram.h"

#include <zelcore/ZELModule.h>

/// Events that cannot be sent, because this program has no bus. Without a bus the service ends, so
/// no system test covers this.
class NotificationsTest : public QObject
{
    Q_OBJECT

private slots:
    void anEventThatCannotBeSentReturnsFalseAndIsLoggedAtLevel3_data()
    {
        QTest::addColumn<int>("level");
        QTest::addColumn<QStringList>("lines");
        const QStringList line{QStringLiteral("error: event KEY_CREATE_NTF notification failed")};
        QTest::newRow("level 2 logs nothing") << 2 << QStringList();
        QTest::newRow("level 3 logs one error line") << 3 << line;
        QTest::newRow("level 7 logs one error line and no debug line") << 7 << line;
    }
    void anEventThatCannotBeSentReturnsFalseAndIsLoggedAtLevel3()
    {
        QFETCH(int, level);
        QFETCH(QStringList, lines);
        ZELModule module(QStringLiteral("Module"));
        unit::LogCapture log(level);
        ZELEvent event;
        QVERIFY(!Notifications(module).keyCreated(event, Key()));
        QCOMPARE(log.take(), lines);
    }
};

PROGKEYS_TEST(NotificationsTest)
#include "NotificationsTest.moc"
