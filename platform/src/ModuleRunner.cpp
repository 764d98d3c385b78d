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

// A bus that is gone refuses everything; that it is gone is then the reason.
bool refuseForBus(const QString &why)
{
    return refuse(BusConnection::isLost() ? BusConnection::lostMessage() : why);
}

bool refuseForLock(pid_t holder)
{
    const QString who =
        holder > 0 ? QStringLiteral("process %1").arg(holder) : QStringLiteral("another process");
    return refuse(
        QStringLiteral("The data failed its check while %1 had it locked; it is left as it is")
            .arg(who));
}

QString nameIsTaken(const QString &name)
{
    return QStringLiteral("The name %1 is taken on the bus; is the module running already?")
        .arg(name);
}

} // namespace

ModuleRunner::ModuleRunner(ZELModule &module) : m_module(module)
{
    // Opened here, so that the bus library dispatches before `run` is called. A hook that waits for
    // a peer would otherwise not notice that the bus is gone.
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

bool ModuleRunner::bringUp()
{
    // The name is claimed last, so that every caller who sees it can use the module.
    return m_connection.open() && ensureRunningAlone() && ensureData() && lockData() &&
           runHook("init", &ZELModule::init) && runHook("start", &ZELModule::start) &&
           appearOnBus();
}

// Asked before any hook runs: a second process must not touch the data of the first.
bool ModuleRunner::ensureRunningAlone()
{
    const QString name = serviceName(m_module.getModuleName());
    if (BusConnection::isTaken(name))
        return refuseForBus(nameIsTaken(name));
    return lockData();
}

QString ModuleRunner::dataDirectory() const
{
    return ZELApplication::dataRoot() + m_module.getModuleName();
}

// Called before `check`, and again after each hook that may create or replace the directory.
bool ModuleRunner::lockData()
{
    const QString directory = dataDirectory();
    return m_lock.acquire(directory) ||
           refuse(QStringLiteral("Another process uses the data in %1; is the module running "
                                 "already?")
                      .arg(directory));
}

bool ModuleRunner::ensureData()
{
    const DataDirectory directory(dataDirectory());
    // Asked before `check`: that may leave new files without content, and may fail because of a
    // lock that is released before it returns.
    const bool heldData = directory.holdsData();
    const std::optional<pid_t> holder = exclusiveLockHolder(directory.path(), Afterwards::Close);
    const bool isSound = m_module.check();
    if (!lockData())
        return false;
    if (isSound)
        return true;
    if (!heldData)
        return runHook("deploy", &ZELModule::deploy);
    if (holder)
        return refuseForLock(*holder);
    return deployOver(directory);
}

// Only when nothing but the data itself can be the reason: sound data fails its check, too, while
// another process has it locked, or while it cannot be written.
bool ModuleRunner::deployOver(const DataDirectory &directory)
{
    if (!isFreeToWrite(directory))
        return false;
    const QString copy = directory.copyAside();
    if (copy.isEmpty())
        return refuse(QStringLiteral("The data failed its check and could not be copied aside; "
                                     "it is left as it is"));
    logger().warning(QStringLiteral("The data failed its check; copied aside to %1").arg(copy));
    if (!isFreeToWrite(directory) || !runHook("deploy", &ZELModule::deploy))
        return false;
    return ZELApplication::isEnding() || m_module.check() || giveUp(directory);
}

bool ModuleRunner::isFreeToWrite(const DataDirectory &directory)
{
    if (const auto holder = exclusiveLockHolder(directory.path(), Afterwards::KeepOpen))
        return refuseForLock(*holder);
    return directory.isWritable() ||
           refuse(QStringLiteral("The data failed its check while its directory cannot be written; "
                                 "it is left as it is"));
}

// The next start finds no directory, and begins afresh.
bool ModuleRunner::giveUp(const DataDirectory &directory)
{
    if (!isFreeToWrite(directory))
        return false;
    const QString aside = directory.setAside();
    if (aside.isEmpty())
        return refuse(QStringLiteral("The data fails its check even after deploy, and could not be "
                                     "set aside; it is left as it is"));
    return refuse(
        QStringLiteral("The data fails its check even after deploy; set aside to %1").arg(aside));
}

bool ModuleRunner::runHook(const char *name, bool (ZELModule::*hook)()) const
{
    if (ZELApplication::isEnding())
        return false;
    return (m_module.*hook)() ||
           refuse(QStringLiteral("The module's hook %1 failed").arg(QLatin1String(name)));
}

bool ModuleRunner::registerObjects()
{
    if (QDBusAbstractAdaptor *adaptor = m_module.getAdaptor())
        m_object.publish(adaptor);
    m_object.publish(new LifecycleAdaptor(m_module));
    new LogControl(m_logObject); // which owns it

    QDBusConnection bus = QDBusConnection::systemBus();
    const QString path = objectPath(m_module.getModuleName());
    if (bus.registerObject(path, &m_object, QDBusConnection::ExportAdaptors) &&
        bus.registerObject(LogControl::path(), &m_logObject, QDBusConnection::ExportAdaptors))
        return true;
    return refuseForBus(QStringLiteral("Cannot register the object %1").arg(path));
}

bool ModuleRunner::appearOnBus()
{
    if (ZELApplication::isEnding() || !registerObjects())
        return false;
    const QString name = serviceName(m_module.getModuleName());
    const BusConnection::Claim claim = BusConnection::claim(name);
    if (claim == BusConnection::Claim::Taken)
        return refuseForBus(nameIsTaken(name));
    if (claim == BusConnection::Claim::Refused)
        return refuseForBus(
            QStringLiteral("The bus does not give this process the name %1").arg(name));
    tellReady(QStringLiteral("%1 is on the bus").arg(name));
    return true;
}

void ModuleRunner::leaveBus()
{
    // Before the name: whoever waits for that to be free may start.
    m_lock.release();
    // Giving the name back waits for the bus, and with it for the replies sent before it.
    QDBusConnection bus = QDBusConnection::systemBus();
    if (bus.isConnected())
        BusConnection::release(serviceName(m_module.getModuleName()));
    bus.unregisterObject(objectPath(m_module.getModuleName()));
    bus.unregisterObject(LogControl::path());
}

} // namespace zel
