#pragma once

#include "IntrospectionText.h"
#include "records/Action.h"
#include "records/Capability.h"
#include "records/Key.h"

#include <QDBusAbstractAdaptor>

/// Publishes the module's operations on the bus. Each method calls the slot with the same name and
/// types of its parent, the module, and returns its result. If there is no such slot or a type is
/// not registered, it throws a ZELException pointer.
class ZelProgrammableKeysAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")
    Q_CLASSINFO("D-Bus Introspection", PROGKEYS_INTROSPECTION_TEXT)

public:
    explicit ZelProgrammableKeysAdaptor(QObject *parent);

public slots:
    qlonglong addAction(const Action &action);
    bool changeProgrammableKeysPosition(const QMapIntInt &mapId);
    qlonglong createProgrammableKey(const Key &k);
    int deleteAction(qlonglong idAction);
    int deleteProgrammableKey(qlonglong idKey);
    ListAction getAction(qlonglong idAction);
    ListAction getAllActions();
    ListKey getAllProgrammableKeys();
    MapQStringCapability getCapabilities(int listId);
    MapQStringCapability getCapabilities();
    Capability getCapability(int listId, const QString &name);
    Capability getCapability(const QString &name);
    ListKey getProgrammableKey(qlonglong idKey);
    ListKey getProgrammableKeysByContainer(const QString &container);
    int modifyAction(const Action &action);
    int modifyProgrammableKey(const Key &k);
    int setIconStateForKey(qlonglong idKey, int icon_x, int icon_y);
    int setLabelStateForKey(qlonglong idKey, int state);

private:
    template <typename... Arguments>
    void invoke(const char *method, Arguments... arguments);
};
