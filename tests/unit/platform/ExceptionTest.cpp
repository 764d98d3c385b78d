#include <zelcore/ZELApplication.h>
#include <zelcore/ZELException.h>
#include <zelcore/ZELModule.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

class ExceptionTest : public QObject
{
    Q_OBJECT

private slots:
    void itKeepsModuleTypeAndMessage();
    void itMayBelongToNoModule();
    void disposingOfItWritesOneErrorLine_data();
    void disposingOfItWritesOneErrorLine();
    void disposingOfItWritesNothingBelowLevelThree();
};

void ExceptionTest::itKeepsModuleTypeAndMessage()
{
    const ZELModule module(QStringLiteral("Some"));
    const ZELException exception(&module, 4, QStringLiteral("the message"));
    QCOMPARE(exception.getModule(), &module);
    QCOMPARE(exception.getErrorType(), 4);
    QCOMPARE(exception.getMessage(), QStringLiteral("the message"));
}

void ExceptionTest::itMayBelongToNoModule()
{
    const ZELException exception(nullptr, -1, QString());
    QVERIFY(!exception.getModule());
    QCOMPARE(exception.getErrorType(), -1);
    QCOMPARE(exception.getMessage(), QString());
}

void ExceptionTest::disposingOfItWritesOneErrorLine_data()
{
    QTest::addColumn<bool>("hasModule");
    QTest::addColumn<QString>("message");
    QTest::newRow("of a module") << true << QStringLiteral("something failed");
    QTest::newRow("of no module") << false << QStringLiteral("something failed");
    QTest::newRow("with placeholders in its message") << true << QStringLiteral("%1 %2 %3");
}

void ExceptionTest::disposingOfItWritesOneErrorLine()
{
    QFETCH(bool, hasModule);
    QFETCH(QString, message);
    const ZELModule module(QStringLiteral("Some"));
    unit::LogCapture log(3);
    ZELApplication::dispose(new ZELException(hasModule ? &module : nullptr, 4, message));
    const QStringList lines = log.take();
    QCOMPARE(lines.size(), 1);
    QVERIFY(lines.first().startsWith(QStringLiteral("error: ")));
    QVERIFY(lines.first().contains(QStringLiteral("type 4")));
    QCOMPARE(lines.first().contains(QStringLiteral("Some")), hasModule);
    QVERIFY2(lines.first().endsWith(message), qUtf8Printable(lines.first()));
}

void ExceptionTest::disposingOfItWritesNothingBelowLevelThree()
{
    unit::LogCapture log(2);
    ZELApplication::dispose(new ZELException(nullptr, 4, QStringLiteral("message")));
    QCOMPARE(log.take(), QStringList());
}

PROGKEYS_TEST_MAIN(ExceptionTest)
#include "ExceptionTest.moc"
