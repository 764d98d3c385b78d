#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "support/MetaObject.h"
#include "support/TestProgram.h"

#include <zelcore/ZELException.h>
#include <zelcore/ZELModule.h>

#include <QRegularExpression>

#include <memory>

namespace {

using Adaptor = ZelProgrammableKeysAdaptor;
using Call = void (*)(Adaptor &);

/// A module whose overloads of the capability methods return different values.
class CapableModule : public ZELModule
{
public:
    CapableModule() : ZELModule(QStringLiteral("Capable")) {}

    MapQStringCapability getCapabilities() override { return {{QStringLiteral("all"), {}}}; }
    MapQStringCapability getCapabilities(int listId) override
    {
        return {{QString::number(listId), {}}};
    }
    Capability getCapability(const QString &name) override { return {name, 1}; }
    Capability getCapability(int listId, const QString &name) override { return {name, listId}; }
};

/// A module with a slot of the same name for another type.
class OtherTypes : public ZELModule
{
    Q_OBJECT

public:
    OtherTypes() : ZELModule(QStringLiteral("OtherTypes")) {}

public slots:
    ListAction getAction(const QString & /*id*/) { return {}; }
};

/// The exception that a call throws, or null if it returns.
std::unique_ptr<ZELException> thrownBy(Call call, const QString &method, QObject &parent)
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^QMetaObject::invokeMethod: No such")));
    const QString message = QStringLiteral("Adaptor::invokeMethod failed: ") + method;
    QTest::ignoreMessage(QtCriticalMsg, qUtf8Printable(message));
    Adaptor adaptor(&parent);
    try {
        call(adaptor);
    } catch (ZELException *exception) {
        return std::unique_ptr<ZELException>(exception);
    }
    return nullptr;
}

} // namespace

Q_DECLARE_METATYPE(Call)

/// Properties of the adaptor that the system tests cannot check: its meta-object, the capability
/// overloads, which return the same values in the service, and calls without a matching slot.
class AdaptorTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        registerDBusKey();
        registerDBusAction();
    }

    void theClassInfosAreTheInterfaceAndItsIntrospection()
    {
        const QMetaObject &type = Adaptor::staticMetaObject;
        QCOMPARE(unit::ownClassInfoNames(type),
                 (QStringList{QStringLiteral("D-Bus Interface"),
                              QStringLiteral("D-Bus Introspection")}));
        QCOMPARE(unit::classInfo(type, "D-Bus Interface"),
                 QStringLiteral("com.velmora.Tessaro.ZELInterface"));
    }

    void theMethodsAreSlotsInAlphabeticalOrder()
    {
        const QStringList expected{
            QStringLiteral("public slot qlonglong addAction(Action) action"),
            QStringLiteral("public slot bool changeProgrammableKeysPosition(QMapIntInt) mapId"),
            QStringLiteral("public slot qlonglong createProgrammableKey(Key) k"),
            QStringLiteral("public slot int deleteAction(qlonglong) idAction"),
            QStringLiteral("public slot int deleteProgrammableKey(qlonglong) idKey"),
            QStringLiteral("public slot ListAction getAction(qlonglong) idAction"),
            QStringLiteral("public slot ListAction getAllActions()"),
            QStringLiteral("public slot ListKey getAllProgrammableKeys()"),
            QStringLiteral("public slot MapQStringCapability getCapabilities(int) listId"),
            QStringLiteral("public slot MapQStringCapability getCapabilities()"),
            QStringLiteral("public slot Capability getCapability(int,QString) listId, name"),
            QStringLiteral("public slot Capability getCapability(QString) name"),
            QStringLiteral("public slot ListKey getProgrammableKey(qlonglong) idKey"),
            QStringLiteral("public slot ListKey getProgrammableKeysByContainer(QString) container"),
            QStringLiteral("public slot int modifyAction(Action) action"),
            QStringLiteral("public slot int modifyProgrammableKey(Key) k"),
            QStringLiteral(
                "public slot int setIconStateForKey(qlonglong,int,int) idKey, icon_x, icon_y"),
            QStringLiteral("public slot int setLabelStateForKey(qlonglong,int) idKey, state"),
        };
        QCOMPARE(unit::ownMethods(Adaptor::staticMetaObject), expected);
    }

    void eachCapabilityMethodCallsTheSameOverloadOfTheModule()
    {
        CapableModule module;
        Adaptor adaptor(&module);
        QCOMPARE(adaptor.getCapabilities().keys(), QStringList{QStringLiteral("all")});
        QCOMPARE(adaptor.getCapabilities(9).keys(), QStringList{QStringLiteral("9")});
        QVERIFY(adaptor.getCapability(QStringLiteral("n")) == (Capability{QStringLiteral("n"), 1}));
        QVERIFY(adaptor.getCapability(9, QStringLiteral("n")) ==
                (Capability{QStringLiteral("n"), 9}));
    }

    void aCallWithoutAMatchingSlotIsLoggedAndThrowsAnException_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<Call>("call");
        const auto row = [](const char *name, Call call) {
            QTest::newRow(name) << QString::fromLatin1(name).section(QLatin1Char(' '), 0, 0)
                                << call;
        };
        row("addAction", [](Adaptor &a) { a.addAction({}); });
        row("changeProgrammableKeysPosition",
            [](Adaptor &a) { a.changeProgrammableKeysPosition({}); });
        row("createProgrammableKey", [](Adaptor &a) { a.createProgrammableKey({}); });
        row("deleteAction", [](Adaptor &a) { a.deleteAction(1); });
        row("deleteProgrammableKey", [](Adaptor &a) { a.deleteProgrammableKey(1); });
        row("getAction", [](Adaptor &a) { a.getAction(1); });
        row("getAllActions", [](Adaptor &a) { a.getAllActions(); });
        row("getAllProgrammableKeys", [](Adaptor &a) { a.getAllProgrammableKeys(); });
        row("getProgrammableKey", [](Adaptor &a) { a.getProgrammableKey(1); });
        row("getProgrammableKeysByContainer",
            [](Adaptor &a) { a.getProgrammableKeysByContainer({}); });
        row("modifyAction", [](Adaptor &a) { a.modifyAction({}); });
        row("modifyProgrammableKey", [](Adaptor &a) { a.modifyProgrammableKey({}); });
        row("setIconStateForKey", [](Adaptor &a) { a.setIconStateForKey(1, 2, 3); });
        row("setLabelStateForKey", [](Adaptor &a) { a.setLabelStateForKey(1, 2); });
        row("getCapabilities", [](Adaptor &a) { a.getCapabilities(); });
        row("getCapabilities of a list", [](Adaptor &a) { a.getCapabilities(1); });
        row("getCapability", [](Adaptor &a) { a.getCapability(QString()); });
        row("getCapability of a list", [](Adaptor &a) { a.getCapability(1, QString()); });
    }
    void aCallWithoutAMatchingSlotIsLoggedAndThrowsAnException()
    {
        QFETCH(QString, method);
        QFETCH(Call, call);
        QObject notAModule;
        const auto exception = thrownBy(call, method, notAModule);
        QVERIFY(exception);
        QCOMPARE(exception->getErrorType(), 4);
        QCOMPARE(exception->getMessage(),
                 QStringLiteral("Adaptor::invokeMethod failed: ") + method);
        QVERIFY(!exception->getModule());
    }

    void aSlotForAnotherTypeIsNotCalledAndTheExceptionHasTheModule()
    {
        OtherTypes module;
        const auto exception =
            thrownBy([](Adaptor &a) { a.getAction(1); }, QStringLiteral("getAction"), module);
        QVERIFY(exception);
        QCOMPARE(exception->getModule(), &module);
    }
};

PROGKEYS_TEST(AdaptorTest)
#include "AdaptorTest.moc"
