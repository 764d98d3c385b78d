#include "BusConnection.h"

#include "zelcore/ZELLogger.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusReply>

#include <dbus/dbus.h>

namespace zel {
namespace {

// The library's own limit is 63 MiB, after which it stops reading for good. 1 GiB is more than a
// bus queues for one connection, and still fits the 32-bit long of the phone.
constexpr long MaxWaitingBytes = 1L << 30;

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
    return bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                       QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                       this, SLOT(lost()));
}

bool BusConnection::isTaken(const QString &serviceName)
{
    const QDBusReply<bool> reply =
        QDBusConnection::systemBus().interface()->isServiceRegistered(serviceName);
    return !reply.isValid() || reply.value();
}

void BusConnection::lost()
{
    logger().error(QStringLiteral("The connection to the system bus is lost; ending"));
    QCoreApplication::exit(EXIT_FAILURE);
}

} // namespace zel
