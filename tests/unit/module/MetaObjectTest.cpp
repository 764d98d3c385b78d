#include "support/MetaObject.h"

#include "module/ZelProgrammableKeys.h"
#include "support/Service.h"
#include "support/TestMain.h"

/// What the adaptor and the framework see of the module.
class MetaObjectTest : public QObject
{
    Q_OBJECT

private slots:
    void theOneClassInfoNamesTheInterface();
    void theSlotsStandInTheirOrder();
    void everyMethodIsASlotAndNothingElseIsDeclared();
    void theModuleIsCastByNameToItsClassAndItsBases();
    void thereIsOneModuleUnderItsName();
    void theSlotsAnswerByName();
};

void MetaObjectTest::theOneClassInfoNamesTheInterface()
{
    const QMetaObject &type = ZelProgrammableKeys::staticMetaObject;
    QCOMPARE(unit::ownClassInfoNames(type), QStringList{QStringLiteral("D-Bus Interface")});
    QCOMPARE(unit::classInfo(type, "D-Bus Interface"),
             QStringLiteral("com.velmora.Tessaro.ZELInterface"));
    QCOMPARE(QLatin1String(type.className()), QLatin1String("ZelProgrammableKeys"));
    QCOMPARE(type.superClass(), &ZELModule::staticMetaObject);
}

void MetaObjectTest::theSlotsStandInTheirOrder()
{
    const QStringList expected{
        QStringLiteral("public ListKey getAllProgrammableKeys()"),
        QStringLiteral("public ListKey getProgrammableKeysByContainer(QString) container"),
        QStringLiteral("public qlonglong createProgrammableKey(Key) key"),
        QStringLiteral("public int modifyProgrammableKey(Key) key"),
        QStringLiteral("public bool changeProgrammableKeysPosition(QMapIntInt) listId"),
        QStringLiteral("public int deleteProgrammableKey(qlonglong) idKey"),
        QStringLiteral("public ListKey getProgrammableKey(qlonglong) idKey"),
        QStringLiteral("public ListAction getAllActions()"),
        QStringLiteral("public qlonglong addAction(Action) action"),
        QStringLiteral("public int modifyAction(Action) action"),
        QStringLiteral("public int deleteAction(qlonglong) idAction"),
        QStringLiteral("public ListAction getAction(qlonglong) idAction"),
        QStringLiteral("public int setIconStateForKey(qlonglong,int,int) idKey, icon_x, icon_y"),
        QStringLiteral("public int setLabelStateForKey(qlonglong,int) idKey, state"),
        QStringLiteral("private void aomKeyPressed(ZELEvent) event"),
    };
    QCOMPARE(unit::ownMethods(ZelProgrammableKeys::staticMetaObject), expected);
}

void MetaObjectTest::everyMethodIsASlotAndNothingElseIsDeclared()
{
    const QMetaObject &type = ZelProgrammableKeys::staticMetaObject;
    for (int index = type.methodOffset(); index < type.methodCount(); ++index)
        QCOMPARE(type.method(index).methodType(), QMetaMethod::Slot);
    QCOMPARE(type.propertyCount(), ZELModule::staticMetaObject.propertyCount());
    QCOMPARE(type.enumeratorCount(), ZELModule::staticMetaObject.enumeratorCount());
}

void MetaObjectTest::theModuleIsCastByNameToItsClassAndItsBases()
{
    ZelProgrammableKeys *const module = &unit::service();
    QCOMPARE(module->qt_metacast("ZelProgrammableKeys"), static_cast<void *>(module));
    QCOMPARE(module->qt_metacast("ZELModule"),
             static_cast<void *>(static_cast<ZELModule *>(module)));
    QCOMPARE(module->qt_metacast("QObject"), static_cast<void *>(static_cast<QObject *>(module)));
    QVERIFY(!module->qt_metacast("ZelProgrammableKeysAdaptor"));
}

void MetaObjectTest::thereIsOneModuleUnderItsName()
{
    ZelProgrammableKeys *const module = &unit::service();
    QCOMPARE(ZelProgrammableKeys::instance(nullptr), module);
    QCOMPARE(module->getModuleName(), QStringLiteral("ZelProgrammableKeys"));
    QCOMPARE(ZelProgrammableKeys::moduleName(), QStringLiteral("ZelProgrammableKeys"));
}

void MetaObjectTest::theSlotsAnswerByName()
{
    registerDBusKey();
    registerDBusAction();
    ZelProgrammableKeys *const module = &unit::service();
    module->deploy();
    ListAction actions;
    QVERIFY(QMetaObject::invokeMethod(module, "getAction", Qt::AutoConnection,
                                      Q_RETURN_ARG(ListAction, actions),
                                      Q_ARG(qlonglong, qlonglong{-1})));
    QCOMPARE(actions.size(), 1);
    qlonglong id = 0;
    QVERIFY(QMetaObject::invokeMethod(module, "addAction", Qt::AutoConnection,
                                      Q_RETURN_ARG(qlonglong, id), Q_ARG(Action, Action())));
    QCOMPARE(id, qlonglong{1});
}

PROGKEYS_TEST_MAIN(MetaObjectTest)
#include "MetaObjectTest.moc"
