#include "module/ZelProgrammableKeys.h"
#include "support/LogCapture.h"
#include "support/MetaObject.h"
#include "support/TestProgram.h"

namespace {

/// A module with another `restoreDefault`.
class OtherDefaults : public ZelProgrammableKeys
{
public:
    OtherDefaults() : ZelProgrammableKeys(QStringLiteral("OtherDefaults")) {}

    // The service itself always returns false.
    bool restoreDefault() override { return true; }
};

} // namespace

/// Properties of the module that the system tests cannot check.
class ModuleTest : public QObject
{
    Q_OBJECT

private slots:
    void theOnlyClassInfoIsTheInterface()
    {
        const QMetaObject &type = ZelProgrammableKeys::staticMetaObject;
        QCOMPARE(unit::ownClassInfoNames(type), QStringList{QStringLiteral("D-Bus Interface")});
        QCOMPARE(unit::classInfo(type, "D-Bus Interface"),
                 QStringLiteral("com.velmora.Tessaro.ZELInterface"));
        QCOMPARE(QLatin1String(type.className()), QLatin1String("ZelProgrammableKeys"));
        QCOMPARE(type.superClass(), &ZELModule::staticMetaObject);
    }

    void theSlotsHaveTheirSignaturesInOrder()
    {
        const QStringList expected{
            QStringLiteral("public slot ListKey getAllProgrammableKeys()"),
            QStringLiteral("public slot ListKey getProgrammableKeysByContainer(QString) container"),
            QStringLiteral("public slot qlonglong createProgrammableKey(Key) key"),
            QStringLiteral("public slot int modifyProgrammableKey(Key) key"),
            QStringLiteral("public slot bool changeProgrammableKeysPosition(QMapIntInt) listId"),
            QStringLiteral("public slot int deleteProgrammableKey(qlonglong) idKey"),
            QStringLiteral("public slot ListKey getProgrammableKey(qlonglong) idKey"),
            QStringLiteral("public slot ListAction getAllActions()"),
            QStringLiteral("public slot qlonglong addAction(Action) action"),
            QStringLiteral("public slot int modifyAction(Action) action"),
            QStringLiteral("public slot int deleteAction(qlonglong) idAction"),
            QStringLiteral("public slot ListAction getAction(qlonglong) idAction"),
            QStringLiteral(
                "public slot int setIconStateForKey(qlonglong,int,int) idKey, icon_x, icon_y"),
            QStringLiteral("public slot int setLabelStateForKey(qlonglong,int) idKey, state"),
            QStringLiteral("private slot void aomKeyPressed(ZELEvent) event"),
        };
        QCOMPARE(unit::ownMethods(ZelProgrammableKeys::staticMetaObject), expected);
    }

    void restoreFactoryLogsAndCallsTheRestoreDefaultOfASubclass()
    {
        OtherDefaults module;
        unit::LogCapture log(7);
        QVERIFY(module.restoreFactory());
        QCOMPARE(log.take(), QStringList{QStringLiteral(
                                 "debug: ZelProgrammableKeys restoring data to factory ...")});
    }
};

PROGKEYS_TEST(ModuleTest)
#include "ModuleTest.moc"
