#include "BusConnection.h"

#include "zelcore/ZELLogger.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusReply>

#include <dbus/dbus.h>

namespace zel {
namespace {

// The default limit is 63 MiB; when it is exceeded, the library never reads again. 1 GiB is more
// than a bus queues for one connection, and fits into the 32-bit long of the phone.
constexpr long MaxWaitingBytes = 1L << 30;

QString lostMessage()
{
    return QStringLiteral("The connection to the system bus is lost; ending");
}

// If the connection is lost, that is the reason why other operations fail.
bool refuse(const QString &why)
{
    logger().error(QDBusConnection::systemBus().isConnected() ? why : lostMessage());
    return false;
}

bool refuseBecauseTaken(const QString &serviceName)
{
    return refuse(QStringLiteral("The name %1 is taken on the bus; is the module running already?")
                      .arg(serviceName));
}

} // namespace

bool BusConnection::open()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.isConnected()) {
        logger().error(
            QStringLiteral("Cannot reach the system bus: %1").arg(bus.lastError().message()));
        return false;
    }
    dbus_connection_set_max_received_size(static_cast<DBusConnection *>(bus.internalPointer()),
                                          MaxWaitingBytes);
    if (bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                    QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                    this, SLOT(lost())))
        return true;
    return refuse(QStringLiteral("Cannot watch the connection to the system bus"));
}

bool BusConnection::isFree(const QString &serviceName)
{
    const QDBusReply<bool> isTaken =
        QDBusConnection::systemBus().interface()->isServiceRegistered(serviceName);
    return (isTaken.isValid() && !isTaken.value()) || refuseBecauseTaken(serviceName);
}

bool BusConnection::claim(const QString &serviceName)
{
    const auto reply = QDBusConnection::systemBus().interface()->registerService(serviceName);
    if (!reply.isValid())
        return refuse(
            QStringLiteral("The bus does not give this process the name %1").arg(serviceName));
    return reply.value() == QDBusConnectionInterface::ServiceRegistered ||
           refuseBecauseTaken(serviceName);
}

void BusConnection::release(const QString &serviceName)
{
    const auto reply = QDBusConnection::systemBus().interface()->unregisterService(serviceName);
    if (!reply.isValid())
        logger().warning(QStringLiteral("The bus did not take back the name %1").arg(serviceName));
}

bool BusConnection::registerObject(const QString &path, QObject &object)
{
    QDBusConnection bus = QDBusConnection::systemBus();
    if (bus.registerObject(path, &object, QDBusConnection::ExportAdaptors))
        return true;
    return refuse(QStringLiteral("Cannot register the object %1").arg(path));
}

void BusConnection::lost()
{
    logger().error(lostMessage());
    QCoreApplication::exit(EXIT_FAILURE);
}

} // namespace zel
