#include "support/MetaObject.h"
#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "support/TestMain.h"

/// What the bus library sees of the adaptor.
class MetaObjectTest : public QObject
{
    Q_OBJECT

private slots:
    void theClassInfosNameTheInterfaceAndThenItsIntrospection();
    void theSlotsStandInTheOrderOfTheirNames();
    void everyMethodIsASlot();
    void theAdaptorBelongsToItsParent();
};

void MetaObjectTest::theClassInfosNameTheInterfaceAndThenItsIntrospection()
{
    const QMetaObject &type = ZelProgrammableKeysAdaptor::staticMetaObject;
    QCOMPARE(unit::ownClassInfoNames(type), (QStringList{QStringLiteral("D-Bus Interface"),
                                                         QStringLiteral("D-Bus Introspection")}));
    QCOMPARE(unit::classInfo(type, "D-Bus Interface"),
             QStringLiteral("com.velmora.Tessaro.ZELInterface"));
}

void MetaObjectTest::theSlotsStandInTheOrderOfTheirNames()
{
    const QStringList expected{
        QStringLiteral("public qlonglong addAction(Action) action"),
        QStringLiteral("public bool changeProgrammableKeysPosition(QMapIntInt) mapId"),
        QStringLiteral("public qlonglong createProgrammableKey(Key) k"),
        QStringLiteral("public int deleteAction(qlonglong) idAction"),
        QStringLiteral("public int deleteProgrammableKey(qlonglong) idKey"),
        QStringLiteral("public ListAction getAction(qlonglong) idAction"),
        QStringLiteral("public ListAction getAllActions()"),
        QStringLiteral("public ListKey getAllProgrammableKeys()"),
        QStringLiteral("public MapQStringCapability getCapabilities(int) listId"),
        QStringLiteral("public MapQStringCapability getCapabilities()"),
        QStringLiteral("public Capability getCapability(int,QString) listId, name"),
        QStringLiteral("public Capability getCapability(QString) name"),
        QStringLiteral("public ListKey getProgrammableKey(qlonglong) idKey"),
        QStringLiteral("public ListKey getProgrammableKeysByContainer(QString) container"),
        QStringLiteral("public int modifyAction(Action) action"),
        QStringLiteral("public int modifyProgrammableKey(Key) k"),
        QStringLiteral("public int setIconStateForKey(qlonglong,int,int) idKey, icon_x, icon_y"),
        QStringLiteral("public int setLabelStateForKey(qlonglong,int) idKey, state"),
    };
    QCOMPARE(unit::ownMethods(ZelProgrammableKeysAdaptor::staticMetaObject), expected);
}

void MetaObjectTest::everyMethodIsASlot()
{
    const QMetaObject &type = ZelProgrammableKeysAdaptor::staticMetaObject;
    for (int index = type.methodOffset(); index < type.methodCount(); ++index)
        QCOMPARE(type.method(index).methodType(), QMetaMethod::Slot);
    QCOMPARE(type.propertyCount(), QDBusAbstractAdaptor::staticMetaObject.propertyCount());
}

void MetaObjectTest::theAdaptorBelongsToItsParent()
{
    QObject parent;
    const ZelProgrammableKeysAdaptor adaptor(&parent);
    QCOMPARE(adaptor.parent(), &parent);
}

PROGKEYS_TEST_MAIN(MetaObjectTest)
#include "MetaObjectTest.moc"
