#include "ModuleRunner.h"

#include "BusNames.h"
#include "DataDirectory.h"
#include "LifecycleAdaptor.h"
#include "zelcore/ZELApplication.h"
#include "zelcore/ZELException.h"
#include "zelcore/ZELLogger.h"
#include "zelcore/ZELModule.h"

#include <QCoreApplication>
#include <QDBusConnection>

namespace zel {
namespace {

bool refuse(const QString &why)
{
    logger().error(why);
    return false;
}

} // namespace

ModuleRunner::ModuleRunner(ZELModule &module) : m_module(module)
{
    QMetaObject::invokeMethod(this, &ModuleRunner::run, Qt::QueuedConnection);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &ModuleRunner::leaveBus);
}

void ModuleRunner::run()
{
    bool isUp = false;
    try {
        isUp = bringUp();
    } catch (ZELException *exception) {
        ZELApplication::dispose(exception);
    }
    if (!isUp)
        QCoreApplication::exit(EXIT_FAILURE);
}

bool ModuleRunner::bringUp()
{
    // The name is claimed last: whoever sees it can use what stands behind it.
    return m_connection.open() && ensureNameIsFree() && ensureData() &&
           runHook("init", &ZELModule::init) && runHook("start", &ZELModule::start) &&
           appearOnBus();
}

// Asked before any hook runs: a second process must not touch the data of the first.
bool ModuleRunner::ensureNameIsFree() const
{
    const QString name = serviceName(m_module.getModuleName());
    return !BusConnection::isTaken(name) ||
           refuse(QStringLiteral("The name %1 is taken on the bus; is the module running already?")
                      .arg(name));
}

bool ModuleRunner::ensureData()
{
    const DataDirectory directory(ZELApplication::dataRoot() + m_module.getModuleName());
    // Asked before `check`, which may leave new, still meaningless files behind.
    const bool heldData = directory.holdsData();
    if (m_module.check())
        return true;
    if (heldData) {
        const QString copy = directory.copyAside();
        if (copy.isEmpty())
            return refuse(QStringLiteral("The data failed its check and could not be copied aside; "
                                         "it is left as it is"));
        logger().warning(QStringLiteral("The data failed its check; copied aside to %1").arg(copy));
    }
    return runHook("deploy", &ZELModule::deploy);
}

bool ModuleRunner::runHook(const char *name, bool (ZELModule::*hook)()) const
{
    return (m_module.*hook)() ||
           refuse(QStringLiteral("The module's hook %1 failed").arg(QLatin1String(name)));
}

bool ModuleRunner::appearOnBus()
{
    if (QDBusAbstractAdaptor *adaptor = m_module.getAdaptor())
        m_object.publish(adaptor);
    m_object.publish(new LifecycleAdaptor(m_module));

    QDBusConnection bus = QDBusConnection::systemBus();
    const QString path = objectPath(m_module.getModuleName());
    if (!bus.registerObject(path, &m_object, QDBusConnection::ExportAdaptors))
        return refuse(QStringLiteral("Cannot register the object %1").arg(path));
    const QString name = serviceName(m_module.getModuleName());
    return bus.registerService(name) ||
           refuse(
               QStringLiteral("Cannot claim the name %1: %2").arg(name, bus.lastError().message()));
}

void ModuleRunner::leaveBus()
{
    // Giving the name back waits for the bus, and with it for the replies sent before it.
    QDBusConnection bus = QDBusConnection::systemBus();
    if (bus.isConnected())
        bus.unregisterService(serviceName(m_module.getModuleName()));
    bus.unregisterObject(objectPath(m_module.getModuleName()));
}

} // namespace zel
