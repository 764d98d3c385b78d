#include "ModuleRunner.h"

#include "FileLocks.h"
#include "LifecycleAdaptor.h"
#include "LogControl.h"
#include "ServiceManager.h"
#include "zelcore/ZELApplication.h"
#include "zelcore/ZELBusNames.h"
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

bool refuseBecauseLocked(pid_t holder)
{
    const QString who =
        holder > 0 ? QStringLiteral("process %1").arg(holder) : QStringLiteral("another process");
    return refuse(
        QStringLiteral("The data failed its check while %1 had it locked; it is left as it is")
            .arg(who));
}

} // namespace

ModuleRunner::ModuleRunner(ZELModule &module)
    : m_module(module), m_directory(ZELApplication::dataRoot() + module.getModuleName())
{
    // Open the connection now, so that the bus library dispatches messages before `run`. Otherwise
    // a hook that waits for a peer would not detect that the bus is lost.
    QDBusConnection::systemBus();
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
    if (!isUp && !ZELApplication::isEnding())
        QCoreApplication::exit(EXIT_FAILURE);
}

// A second process must not use the data of the first one, so it ends before any hook runs. The
// name is claimed last, so that calls succeed as soon as the name has an owner.
bool ModuleRunner::bringUp()
{
    return m_connection.open() && BusConnection::isFree(serviceName(m_module.getModuleName())) &&
           lockData() && ensureData() && lockData() && runHook("init", &ZELModule::init) &&
           runHook("start", &ZELModule::start) && appearOnBus();
}

// Called before `check`, and again after each hook that may create or replace the directory.
bool ModuleRunner::lockData()
{
    if (m_lock.acquire(m_directory.path()))
        return true;
    return refuse(
        QStringLiteral("Another process uses the data in %1; is the module running already?")
            .arg(m_directory.path()));
}

bool ModuleRunner::ensureData()
{
    // Determine this before `check`, which may create empty files, and may fail because of a lock
    // that is released before it returns.
    const bool heldData = m_directory.holdsData();
    const std::optional<pid_t> holder = exclusiveLockHolder(m_directory.path(), Afterwards::Close);
    const bool isSound = m_module.check();
    if (!lockData())
        return false;
    if (isSound)
        return true;
    if (!heldData)
        return runHook("deploy", &ZELModule::deploy);
    if (holder)
        return refuseBecauseLocked(*holder);
    return deployOver();
}

// Intact data also fails its check if another process has locked it, or if it cannot be written.
// Such data is not changed.
bool ModuleRunner::deployOver()
{
    if (!isFreeToWrite())
        return false;
    const QString copy = m_directory.copyAside();
    if (copy.isEmpty())
        return refuse(QStringLiteral("The data failed its check, and could not be copied; "
                                     "it is left as it is"));
    logger().warning(QStringLiteral("The data failed its check; copied to %1").arg(copy));
    if (!isFreeToWrite() || !runHook("deploy", &ZELModule::deploy))
        return false;
    return ZELApplication::isEnding() || m_module.check() || giveUp();
}

bool ModuleRunner::isFreeToWrite() const
{
    if (const auto holder = exclusiveLockHolder(m_directory.path(), Afterwards::KeepOpen))
        return refuseBecauseLocked(*holder);
    return m_directory.isWritable() ||
           refuse(QStringLiteral("The data failed its check, and its directory cannot be written; "
                                 "the data is left as it is"));
}

// The next start finds no directory and creates new data.
bool ModuleRunner::giveUp() const
{
    if (!isFreeToWrite())
        return false;
    const QString aside = m_directory.setAside();
    return refuse(aside.isEmpty()
                      ? QStringLiteral("The data fails its check even after deploy, and could not "
                                       "be moved; it is left as it is")
                      : QStringLiteral("The data fails its check even after deploy; moved to ") +
                            aside);
}

bool ModuleRunner::runHook(const char *name, bool (ZELModule::*hook)()) const
{
    if (ZELApplication::isEnding())
        return false;
    if ((m_module.*hook)())
        return true;
    return refuse(QStringLiteral("The module's hook %1 failed").arg(QLatin1String(name)));
}

bool ModuleRunner::registerObjects()
{
    if (QDBusAbstractAdaptor *adaptor = m_module.getAdaptor())
        m_object.publish(adaptor);
    m_object.publish(new LifecycleAdaptor(m_module));
    new LogControl(m_logObject); // belongs to the object
    const QString path = objectPath(m_module.getModuleName());
    return BusConnection::registerObject(path, m_object) &&
           BusConnection::registerObject(LogControl::path(), m_logObject);
}

bool ModuleRunner::appearOnBus()
{
    const QString name = serviceName(m_module.getModuleName());
    if (ZELApplication::isEnding() || !registerObjects() || !BusConnection::claim(name))
        return false;
    tellReady(QStringLiteral("%1 is on the bus").arg(name));
    return true;
}

void ModuleRunner::leaveBus()
{
    // Release the lock before the name, because a process that waits for the name needs the lock.
    m_lock.release();
    // Releasing the name also waits until the bus has received all replies.
    QDBusConnection bus = QDBusConnection::systemBus();
    if (bus.isConnected())
        BusConnection::release(serviceName(m_module.getModuleName()));
    bus.unregisterObject(objectPath(m_module.getModuleName()));
    bus.unregisterObject(LogControl::path());
}

} // namespace zel
