#include "dbus/ZelProgrammableKeysAdaptor.h"

#include <zelcore/ZELException.h>
#include <zelcore/ZELModule.h>

#include <QMetaObject>
#include <QtDebug>

namespace {

// The platform's error type for a call that could not be invoked.
constexpr int InvocationError = 4;

[[noreturn]] void throwInvocationFailed(const QObject *parent, const char *method)
{
    qCritical("Adaptor::invokeMethod failed: %s", method);
    // The platform catches pointers and deletes the exceptions.
    throw new ZELException(
        qobject_cast<const ZELModule *>(parent), InvocationError,
        QStringLiteral("Adaptor::invokeMethod failed: %1").arg(QLatin1String(method)));
}

} // namespace

ZelProgrammableKeysAdaptor::ZelProgrammableKeysAdaptor(QObject *parent)
    : QDBusAbstractAdaptor(parent)
{
    setAutoRelaySignals(true);
}

template <typename... Arguments>
void ZelProgrammableKeysAdaptor::invoke(const char *method, Arguments... arguments)
{
    if (!QMetaObject::invokeMethod(parent(), method, Qt::AutoConnection, arguments...))
        throwInvocationFailed(parent(), method);
}

qlonglong ZelProgrammableKeysAdaptor::addAction(const Action &action)
{
    qlonglong result = 0;
    invoke("addAction", Q_RETURN_ARG(qlonglong, result), Q_ARG(Action, action));
    return result;
}

bool ZelProgrammableKeysAdaptor::changeProgrammableKeysPosition(const QMapIntInt &mapId)
{
    bool result = false;
    invoke("changeProgrammableKeysPosition", Q_RETURN_ARG(bool, result), Q_ARG(QMapIntInt, mapId));
    return result;
}

qlonglong ZelProgrammableKeysAdaptor::createProgrammableKey(const Key &k)
{
    qlonglong result = 0;
    invoke("createProgrammableKey", Q_RETURN_ARG(qlonglong, result), Q_ARG(Key, k));
    return result;
}

int ZelProgrammableKeysAdaptor::deleteAction(qlonglong idAction)
{
    int result = 0;
    invoke("deleteAction", Q_RETURN_ARG(int, result), Q_ARG(qlonglong, idAction));
    return result;
}

int ZelProgrammableKeysAdaptor::deleteProgrammableKey(qlonglong idKey)
{
    int result = 0;
    invoke("deleteProgrammableKey", Q_RETURN_ARG(int, result), Q_ARG(qlonglong, idKey));
    return result;
}

ListAction ZelProgrammableKeysAdaptor::getAction(qlonglong idAction)
{
    ListAction result;
    invoke("getAction", Q_RETURN_ARG(ListAction, result), Q_ARG(qlonglong, idAction));
    return result;
}

ListAction ZelProgrammableKeysAdaptor::getAllActions()
{
    ListAction result;
    invoke("getAllActions", Q_RETURN_ARG(ListAction, result));
    return result;
}

ListKey ZelProgrammableKeysAdaptor::getAllProgrammableKeys()
{
    ListKey result;
    invoke("getAllProgrammableKeys", Q_RETURN_ARG(ListKey, result));
    return result;
}

MapQStringCapability ZelProgrammableKeysAdaptor::getCapabilities(int listId)
{
    MapQStringCapability result;
    invoke("getCapabilities", Q_RETURN_ARG(MapQStringCapability, result), Q_ARG(int, listId));
    return result;
}

MapQStringCapability ZelProgrammableKeysAdaptor::getCapabilities()
{
    MapQStringCapability result;
    invoke("getCapabilities", Q_RETURN_ARG(MapQStringCapability, result));
    return result;
}

Capability ZelProgrammableKeysAdaptor::getCapability(int listId, const QString &name)
{
    Capability result;
    invoke("getCapability", Q_RETURN_ARG(Capability, result), Q_ARG(int, listId),
           Q_ARG(QString, name));
    return result;
}

Capability ZelProgrammableKeysAdaptor::getCapability(const QString &name)
{
    Capability result;
    invoke("getCapability", Q_RETURN_ARG(Capability, result), Q_ARG(QString, name));
    return result;
}

ListKey ZelProgrammableKeysAdaptor::getProgrammableKey(qlonglong idKey)
{
    ListKey result;
    invoke("getProgrammableKey", Q_RETURN_ARG(ListKey, result), Q_ARG(qlonglong, idKey));
    return result;
}

ListKey ZelProgrammableKeysAdaptor::getProgrammableKeysByContainer(const QString &container)
{
    ListKey result;
    invoke("getProgrammableKeysByContainer", Q_RETURN_ARG(ListKey, result),
           Q_ARG(QString, container));
    return result;
}

int ZelProgrammableKeysAdaptor::modifyAction(const Action &action)
{
    int result = 0;
    invoke("modifyAction", Q_RETURN_ARG(int, result), Q_ARG(Action, action));
    return result;
}

int ZelProgrammableKeysAdaptor::modifyProgrammableKey(const Key &k)
{
    int result = 0;
    invoke("modifyProgrammableKey", Q_RETURN_ARG(int, result), Q_ARG(Key, k));
    return result;
}

int ZelProgrammableKeysAdaptor::setIconStateForKey(qlonglong idKey, int icon_x, int icon_y)
{
    int result = 0;
    invoke("setIconStateForKey", Q_RETURN_ARG(int, result), Q_ARG(qlonglong, idKey),
           Q_ARG(int, icon_x), Q_ARG(int, icon_y));
    return result;
}

int ZelProgrammableKeysAdaptor::setLabelStateForKey(qlonglong idKey, int state)
{
    int result = 0;
    invoke("setLabelStateForKey", Q_RETURN_ARG(int, result), Q_ARG(qlonglong, idKey),
           Q_ARG(int, state));
    return result;
}
