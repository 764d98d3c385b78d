#include <zelcore/ZELModule.h>

#include "support/LogCapture.h"
#include "support/TestMain.h"

namespace {

using Hook = bool (ZELModule::*)();

/// Says no from every hook, and counts.
class CountingModule : public ZELModule
{
public:
    CountingModule() : ZELModule(QStringLiteral("Counting")) {}

    bool check() override { return count(); }
    bool deploy() override { return count(); }
    bool init() override { return count(); }
    bool start() override { return count(); }

    int hooks = 0;

private:
    bool count()
    {
        ++hooks;
        return false;
    }
};

} // namespace

Q_DECLARE_METATYPE(Hook)

/// A module that leaves everything as the framework has it.
class ModuleTest : public QObject
{
    Q_OBJECT

private slots:
    void itHasItsNameAndNoAdaptor();
    void everyHookSaysYesAndChangesNothing_data();
    void everyHookSaysYesAndChangesNothing();
    void thePresentationHooksDoNothing();
    void itKnowsNoCapabilities();
    void theCapabilitiesAnswerByName();
    void nobodyRunsTheHooksUnderAnotherApplicationObject();
};

void ModuleTest::itHasItsNameAndNoAdaptor()
{
    const ZELModule module(QStringLiteral("Some"));
    QCOMPARE(module.getModuleName(), QStringLiteral("Some"));
    QVERIFY(!module.getAdaptor());
}

void ModuleTest::everyHookSaysYesAndChangesNothing_data()
{
    QTest::addColumn<Hook>("hook");
    QTest::newRow("check") << Hook(&ZELModule::check);
    QTest::newRow("deploy") << Hook(&ZELModule::deploy);
    QTest::newRow("init") << Hook(&ZELModule::init);
    QTest::newRow("start") << Hook(&ZELModule::start);
    QTest::newRow("stop") << Hook(&ZELModule::stop);
    QTest::newRow("preSaveForSaveRestore") << Hook(&ZELModule::preSaveForSaveRestore);
    QTest::newRow("postRestoreForSaveRestore") << Hook(&ZELModule::postRestoreForSaveRestore);
    QTest::newRow("restoreDefault") << Hook(&ZELModule::restoreDefault);
    QTest::newRow("restoreFactory") << Hook(&ZELModule::restoreFactory);
}

void ModuleTest::everyHookSaysYesAndChangesNothing()
{
    QFETCH(Hook, hook);
    ZELModule module(QStringLiteral("Some"));
    unit::LogCapture log(7);
    QVERIFY((module.*hook)());
    QVERIFY(!module.getAdaptor());
    QCOMPARE(log.take(), QStringList());
}

void ModuleTest::thePresentationHooksDoNothing()
{
    ZELModule module(QStringLiteral("Some"));
    unit::LogCapture log(7);
    module.presentation_loaded();
    module.presentation_stop();
    QCOMPARE(log.take(), QStringList());
}

void ModuleTest::itKnowsNoCapabilities()
{
    ZELModule module(QStringLiteral("Some"));
    QCOMPARE(module.getCapabilities().size(), 0);
    QCOMPARE(module.getCapabilities(7).size(), 0);
    QVERIFY(module.getCapability(QStringLiteral("any")) == Capability());
    QVERIFY(module.getCapability(7, QStringLiteral("any")) == Capability());
}

void ModuleTest::theCapabilitiesAnswerByName()
{
    ZELModule module(QStringLiteral("Some"));
    MapQStringCapability map{{QStringLiteral("left over"), Capability()}};
    QVERIFY(QMetaObject::invokeMethod(&module, "getCapabilities",
                                      Q_RETURN_ARG(MapQStringCapability, map)));
    QCOMPARE(map.size(), 0);
    map.insert(QStringLiteral("left over"), Capability());
    QVERIFY(QMetaObject::invokeMethod(&module, "getCapabilities",
                                      Q_RETURN_ARG(MapQStringCapability, map), Q_ARG(int, 1)));
    QCOMPARE(map.size(), 0);
    Capability one{QStringLiteral("left over"), 1};
    QVERIFY(QMetaObject::invokeMethod(&module, "getCapability", Q_RETURN_ARG(Capability, one),
                                      Q_ARG(QString, QStringLiteral("any"))));
    QVERIFY(one == Capability());
    one.value = 1;
    QVERIFY(QMetaObject::invokeMethod(&module, "getCapability", Q_RETURN_ARG(Capability, one),
                                      Q_ARG(int, 1), Q_ARG(QString, QStringLiteral("any"))));
    QVERIFY(one == Capability());
}

void ModuleTest::nobodyRunsTheHooksUnderAnotherApplicationObject()
{
    const CountingModule module;
    bool isLoopDone = false;
    QMetaObject::invokeMethod(
        this, [&isLoopDone] { isLoopDone = true; }, Qt::QueuedConnection);
    QVERIFY(QTest::qWaitFor([&] { return isLoopDone; }));
    QCOMPARE(module.hooks, 0);
}

PROGKEYS_TEST_MAIN(ModuleTest)
#include "ModuleTest.moc"
