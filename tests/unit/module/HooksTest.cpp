#include "storage/OtherProgram.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

using Hook = bool (ZELModule::*)();

void addHookRows()
{
    QTest::addColumn<Hook>("hook");
    QTest::addColumn<bool>("result");
    QTest::addColumn<QString>("line");
    const auto row = [](const char *name, Hook hook, bool result, const char *line) {
        QTest::newRow(name) << hook << result
                            << QStringLiteral("debug: ZelProgrammableKeys ") + QLatin1String(line);
    };
    row("check", &ZELModule::check, true, "checking...");
    row("deploy", &ZELModule::deploy, true, "deploying...");
    row("init", &ZELModule::init, true, "initialization...");
    row("start", &ZELModule::start, true, "starting...");
    row("restoreDefault", &ZELModule::restoreDefault, false, "restoring data to default ...");
    row("restoreFactory", &ZELModule::restoreFactory, false, "restoring data to factory ...");
}

bool call(Hook hook)
{
    return (static_cast<ZELModule &>(unit::service()).*hook)();
}

/// Everything that the store holds, as text.
QStringList contents()
{
    QStringList texts;
    for (const Key &key : unit::service().getAllProgrammableKeys())
        texts.append(describe(key));
    for (const Action &action : unit::service().getAllActions())
        texts.append(describe(action));
    return texts;
}

void storeSomething()
{
    unit::stored(unit::setKey(unit::stored(unit::userAction()).idAction));
}

} // namespace

Q_DECLARE_METATYPE(Hook)
using Other = bool (*)(ZELModule &);
Q_DECLARE_METATYPE(Other)

class HooksTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { unit::resetService(); }

    void aHookReturnsItsResult_data() { addHookRows(); }
    void aHookReturnsItsResult();
    void aHookWritesItsLineFirstAndOnceAtLevelSeven_data() { addHookRows(); }
    void aHookWritesItsLineFirstAndOnceAtLevelSeven();
    void aHookWritesNoLineAtLevelSix_data() { addHookRows(); }
    void aHookWritesNoLineAtLevelSix();

    void checkPassesOnWhatTheTablesSay();
    void deployLeavesNothingButTheReservedAction();
    void deployReportsSuccessEvenWhenTheTablesCannotBeMade();
    void aRestoreLeavesNothingButTheReservedActionAndIsAnnounced_data();
    void aRestoreLeavesNothingButTheReservedActionAndIsAnnounced();
    void aRestoreIsAnnouncedBeforeTheTablesAreReset();
    void restoreFactoryWritesItsLineAndThenThoseOfRestoreDefault();
    void theOtherHooksChangeNothing_data();
    void theOtherHooksChangeNothing();
};

void HooksTest::aHookReturnsItsResult()
{
    QFETCH(Hook, hook);
    QFETCH(bool, result);
    QCOMPARE(call(hook), result);
    QCOMPARE(call(hook), result);
}

void HooksTest::aHookWritesItsLineFirstAndOnceAtLevelSeven()
{
    QFETCH(Hook, hook);
    QFETCH(QString, line);
    unit::LogCapture log(7);
    for (int round = 0; round < 2; ++round) {
        call(hook);
        const QStringList lines = log.take();
        QCOMPARE(lines.value(0), line);
        QCOMPARE(lines.count(line), 1);
    }
}

void HooksTest::aHookWritesNoLineAtLevelSix()
{
    QFETCH(Hook, hook);
    unit::LogCapture log(6);
    call(hook);
    QCOMPARE(log.take().filter(QStringLiteral("debug: ")), QStringList());
}

void HooksTest::checkPassesOnWhatTheTablesSay()
{
    OtherProgram().execute({QStringLiteral("DROP TABLE ACTION")});
    QVERIFY(!unit::service().check());
    unit::resetService();
    QVERIFY(unit::service().check());
}

void HooksTest::deployLeavesNothingButTheReservedAction()
{
    const QStringList empty = contents();
    storeSomething();
    unit::EventRecorder recorder;
    QVERIFY(unit::service().deploy());
    QCOMPARE(contents(), empty);
    QCOMPARE(empty.size(), 1);
    QCOMPARE(recorder.takeNames(), QStringList());
}

void HooksTest::deployReportsSuccessEvenWhenTheTablesCannotBeMade()
{
    OtherProgram().execute(
        {QStringLiteral("DROP TABLE KEY"), QStringLiteral("CREATE VIEW KEY AS SELECT 1")});
    QVERIFY(unit::service().deploy());
    OtherProgram().execute({QStringLiteral("DROP VIEW KEY")});
}

void HooksTest::aRestoreLeavesNothingButTheReservedActionAndIsAnnounced_data()
{
    QTest::addColumn<Hook>("hook");
    QTest::addColumn<bool>("isFilled");
    QTest::newRow("restoreDefault on an empty store") << Hook(&ZELModule::restoreDefault) << false;
    QTest::newRow("restoreDefault on a filled store") << Hook(&ZELModule::restoreDefault) << true;
    QTest::newRow("restoreFactory on an empty store") << Hook(&ZELModule::restoreFactory) << false;
    QTest::newRow("restoreFactory on a filled store") << Hook(&ZELModule::restoreFactory) << true;
}

void HooksTest::aRestoreLeavesNothingButTheReservedActionAndIsAnnounced()
{
    QFETCH(Hook, hook);
    QFETCH(bool, isFilled);
    const QStringList empty = contents();
    if (isFilled)
        storeSomething();
    unit::EventRecorder recorder;
    QVERIFY(!call(hook));
    QCOMPARE(recorder.takeNames(), QStringList{QStringLiteral("DB_RESET_NTF")});
    QCOMPARE(contents(), empty);
}

void HooksTest::aRestoreIsAnnouncedBeforeTheTablesAreReset()
{
    // The reset fails at its first step and says so, which shows when it begins.
    OtherProgram().execute(
        {QStringLiteral("DROP TABLE KEY"), QStringLiteral("CREATE VIEW KEY AS SELECT 1")});
    unit::LogCapture log(7);
    unit::service().restoreDefault();
    const QStringList lines = log.take();
    OtherProgram().execute({QStringLiteral("DROP VIEW KEY")});
    QCOMPARE(lines.value(0),
             QStringLiteral("debug: ZelProgrammableKeys restoring data to default ..."));
    QCOMPARE(lines.value(1), QStringLiteral("debug: event DB_RESET_NTF sent"));
    QVERIFY(lines.value(2).startsWith(QStringLiteral("error: Error: DROP TABLE IF EXISTS KEY ")));
}

void HooksTest::restoreFactoryWritesItsLineAndThenThoseOfRestoreDefault()
{
    unit::LogCapture log(7);
    unit::service().restoreDefault();
    const QStringList linesOfDefault = log.take();
    unit::service().restoreFactory();
    QCOMPARE(log.take(), QStringList{QStringLiteral(
                             "debug: ZelProgrammableKeys restoring data to factory ...")} +
                             linesOfDefault);
}

void HooksTest::theOtherHooksChangeNothing_data()
{
    QTest::addColumn<Other>("hook");
    const auto row = [](const char *name, Other hook) { QTest::newRow(name) << hook; };
    row("stop returns true", [](ZELModule &module) { return module.stop(); });
    row("presentation_loaded", [](ZELModule &module) {
        module.presentation_loaded();
        return true;
    });
    row("presentation_stop", [](ZELModule &module) {
        module.presentation_stop();
        return true;
    });
    row("preSaveForSaveRestore", [](ZELModule &module) { return module.preSaveForSaveRestore(); });
    row("postRestoreForSaveRestore",
        [](ZELModule &module) { return module.postRestoreForSaveRestore(); });
}

void HooksTest::theOtherHooksChangeNothing()
{
    QFETCH(Other, hook);
    storeSomething();
    const QStringList before = contents();
    unit::EventRecorder recorder;
    unit::LogCapture log(7);
    QVERIFY(hook(unit::service()));
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(recorder.takeNames(), QStringList());
    QCOMPARE(contents(), before);
}

PROGKEYS_TEST_MAIN(HooksTest)
#include "HooksTest.moc"
