#include <zelcore/ZELApplication.h>
#include <zelcore/ZELLogger.h>
#include <zelcore/ZELModule.h>

#include "support/LogCapture.h"
#include "support/TestProgram.h"

using Hook = bool (ZELModule::*)();
Q_DECLARE_METATYPE(Hook)

/// A module without overrides, in a process without a bus.
class ModuleTest : public QObject
{
    Q_OBJECT

public slots:
    void receive(const ZELEvent & /*event*/) {}
    void receiveText(const QString & /*text*/) {}
    void receiveMore(const ZELEvent & /*event*/, int /*more*/) {}

private slots:
    void theModuleHasItsNameAndNoAdaptor()
    {
        QCOMPARE(m_module.getModuleName(), QStringLiteral("Some"));
        QVERIFY(!m_module.getAdaptor());
    }

    void everyHookReturnsTrueAndDoesNothing_data()
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

    void everyHookReturnsTrueAndDoesNothing()
    {
        QFETCH(Hook, hook);
        unit::LogCapture log(7);
        QVERIFY((m_module.*hook)());
        m_module.presentation_loaded();
        m_module.presentation_stop();
        QCOMPARE(log.take(), QStringList());
    }

    void theModuleHasNoCapabilities()
    {
        QCOMPARE(m_module.getCapabilities().size(), 0);
        QCOMPARE(m_module.getCapabilities(7).size(), 0);
        QVERIFY(m_module.getCapability(QStringLiteral("any")) == Capability());
        QVERIFY(m_module.getCapability(7, QStringLiteral("any")) == Capability());
    }

    void aSlotThatTakesNoEventIsRefusedAndLogged_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::newRow("an unknown name") << QByteArray(SLOT(missing(ZELEvent)));
        QTest::newRow("another parameter") << QByteArray(SLOT(receiveText(QString)));
        QTest::newRow("two parameters") << QByteArray(SLOT(receiveMore(ZELEvent, int)));
        QTest::newRow("no slot code") << QByteArray("receive(ZELEvent)");
        QTest::newRow("an empty text") << QByteArray("");
    }

    void aSlotThatTakesNoEventIsRefusedAndLogged()
    {
        QFETCH(QByteArray, slot);
        unit::LogCapture log(3);
        const QString name = QStringLiteral("SOME_EVENT");
        QVERIFY(!m_module.subscribeEvent(name, this, slot.constData()));
        QCOMPARE(log.take(),
                 QStringList{QStringLiteral(
                                 "error: Cannot subscribe to event SOME_EVENT: there is no slot ") +
                             QString::fromLatin1(slot)});
        QVERIFY(!m_module.subscribeEvent(name, nullptr, slot.constData()));
    }

    void eventsAndCallsFailWithoutABus()
    {
        ZELEvent event;
        event.setEvtName(QStringLiteral("SOME_EVENT"));
        QVERIFY(!m_module.notifyEvent(event));
        unit::LogCapture log(3);
        QVERIFY(!m_module.subscribeEvent(event.getEvtName(), this, SLOT(receive(ZELEvent))));
        QCOMPARE(log.take(), QStringList{QStringLiteral("error: Cannot subscribe to event "
                                                        "SOME_EVENT: the bus refused")});
        const QDBusMessage reply =
            m_module.syncRemoteCall(QStringLiteral("Peer"), QStringLiteral("doIt"), {});
        QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    }

    void aLogCategoryIsWrittenBeforeTheText()
    {
        unit::LogCapture log(3);
        logger(QStringLiteral("storage")).error(QStringLiteral("text"));
        QCOMPARE(log.take(), QStringList{QStringLiteral("error: storage: text")});
    }

    void theDataRootComesFromTheEnvironment_data()
    {
        QTest::addColumn<QByteArray>("variable");
        QTest::addColumn<QString>("root");
        QTest::newRow("with a slash") << QByteArray("/tmp/data/") << QStringLiteral("/tmp/data/");
        QTest::newRow("without a slash") << QByteArray("/tmp/data") << QStringLiteral("/tmp/data/");
        QTest::newRow("empty") << QByteArray("") << QStringLiteral("/data/ZELApplication/");
    }

    void theDataRootComesFromTheEnvironment()
    {
        QFETCH(QByteArray, variable);
        QFETCH(QString, root);
        const QByteArray former = qgetenv("ZEL_DATA_ROOT");
        qputenv("ZEL_DATA_ROOT", variable);
        const QString found = ZELApplication::dataRoot();
        qputenv("ZEL_DATA_ROOT", former);
        QCOMPARE(found, root);
    }

private:
    ZELModule m_module{QStringLiteral("Some")};
};

PROGKEYS_TEST(ModuleTest)
#include "ModuleTest.moc"
