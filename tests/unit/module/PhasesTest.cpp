#include "QtCompatibility.h"
#include "support/EventRecorder.h"
#include "support/LogCapture.h"
#include "support/MetaObject.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <QDBusAbstractAdaptor>

namespace {

bool busKnows(const QVariant &value)
{
    return zel::qt::busSignature(value) != nullptr;
}

void pressAnyKey()
{
    ZELModule peer(QStringLiteral("Peer"));
    ZELEvent press;
    press.setEvtName(QStringLiteral("AOM_KEY_PRESS_EVENT"));
    for (const char *name : {"aom_key_num", "aom_type", "addr"})
        press.addArgument(1, QLatin1String(name), true);
    QVERIFY(peer.notifyEvent(press));
}

} // namespace

/// The module from its construction to its start: one process, and so one test function a phase,
/// in their order.
class PhasesTest : public QObject
{
    Q_OBJECT

private slots:
    void beforeInitTheRecordsAreNotKnownToTheBus();
    void beforeDeployTheCheckFails();
    void afterDeployTheCheckPasses();
    void initMakesTheRecordsKnown();
    void afterInitAPressIsAnsweredOnce();
    void beforeStartThereIsNoAdaptor();
    void startCreatesTheAdaptorAsAChildOfTheModule();
};

void PhasesTest::beforeInitTheRecordsAreNotKnownToTheBus()
{
    QCOMPARE(unit::service().getModuleName(), QStringLiteral("ZelProgrammableKeys"));
    QVERIFY(!busKnows(QVariant::fromValue(Key())));
    QVERIFY(!busKnows(QVariant::fromValue(ListKey())));
    QVERIFY(!busKnows(QVariant::fromValue(Action())));
    QVERIFY(!busKnows(QVariant::fromValue(ListAction())));
}

void PhasesTest::beforeDeployTheCheckFails()
{
    unit::LogCapture log(6);
    QVERIFY(!unit::service().check());
    QCOMPARE(log.take(),
             QStringList{QStringLiteral("info: Table Key is not correct. Check fails")});
}

void PhasesTest::afterDeployTheCheckPasses()
{
    QVERIFY(unit::service().deploy());
    QVERIFY(unit::service().check());
    QVERIFY(!busKnows(QVariant::fromValue(Key())));
}

void PhasesTest::initMakesTheRecordsKnown()
{
    QVERIFY(unit::service().init());
    QVERIFY(busKnows(QVariant::fromValue(Key())));
    QVERIFY(busKnows(QVariant::fromValue(ListKey())));
    QVERIFY(busKnows(QVariant::fromValue(Action())));
    QVERIFY(busKnows(QVariant::fromValue(ListAction())));
}

void PhasesTest::afterInitAPressIsAnsweredOnce()
{
    unit::EventRecorder recorder;
    pressAnyKey();
    QStringList names;
    const auto isAnswered = [&] {
        names += recorder.takeNames();
        return !names.filter(QStringLiteral("NTF")).isEmpty();
    };
    QVERIFY(QTest::qWaitFor(isAnswered));
    names += recorder.takeNames();
    names.removeAll(QStringLiteral("AOM_KEY_PRESS_EVENT"));
    QCOMPARE(names, QStringList{QStringLiteral("AOMKEY_PRESS_NTF")});
}

void PhasesTest::beforeStartThereIsNoAdaptor()
{
    QVERIFY(!unit::service().getAdaptor());
    QCOMPARE(unit::service().findChildren<QDBusAbstractAdaptor *>().size(), 0);
}

void PhasesTest::startCreatesTheAdaptorAsAChildOfTheModule()
{
    QVERIFY(unit::service().start());
    QDBusAbstractAdaptor *const adaptor = unit::service().getAdaptor();
    QVERIFY(adaptor);
    QCOMPARE(adaptor->parent(), &unit::service());
    QCOMPARE(QLatin1String(adaptor->metaObject()->className()),
             QLatin1String("ZelProgrammableKeysAdaptor"));
    QCOMPARE(unit::service().findChildren<QDBusAbstractAdaptor *>().size(), 1);
}

PROGKEYS_TEST_MAIN(PhasesTest)
#include "PhasesTest.moc"
