#include "module/ZelProgrammableKeys.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

/// A module that restores its data in a way of its own.
class OtherDefaults : public ZelProgrammableKeys
{
public:
    explicit OtherDefaults(bool result)
        : ZelProgrammableKeys(QStringLiteral("OtherDefaults")), m_result(result)
    {
    }

    bool restoreDefault() override
    {
        ++calls;
        return m_result;
    }

    int calls = 0;

private:
    bool m_result;
};

} // namespace

class RestoreDispatchTest : public QObject
{
    Q_OBJECT

private slots:
    void restoreFactoryCallsTheRestoreDefaultOfASubclass_data();
    void restoreFactoryCallsTheRestoreDefaultOfASubclass();
};

void RestoreDispatchTest::restoreFactoryCallsTheRestoreDefaultOfASubclass_data()
{
    QTest::addColumn<bool>("result");
    QTest::newRow("and returns its true") << true;
    QTest::newRow("and returns its false") << false;
}

void RestoreDispatchTest::restoreFactoryCallsTheRestoreDefaultOfASubclass()
{
    QFETCH(bool, result);
    unit::resetService();
    unit::stored(unit::setKey(-1));
    OtherDefaults module(result);
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    QCOMPARE(module.restoreFactory(), result);
    QCOMPARE(module.calls, 1);
    QCOMPARE(log.take(), QStringList{QStringLiteral(
                             "debug: ZelProgrammableKeys restoring data to factory ...")});
    QCOMPARE(recorder.takeNames(), QStringList());
    QCOMPARE(unit::service().getAllProgrammableKeys().size(), 1);
}

PROGKEYS_TEST_MAIN(RestoreDispatchTest)
#include "RestoreDispatchTest.moc"
