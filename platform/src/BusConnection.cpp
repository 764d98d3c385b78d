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
    if (!bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                     QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                     this, SLOT(lost()))) {
        logger().error(QStringLiteral("Cannot watch the connection to the system bus"));
        return false;
    }
    return true;
}

bool BusConnection::isLost()
{
    return !QDBusConnection::systemBus().isConnected();
}

QString BusConnection::lostMessage()
{
    return QStringLiteral("The connection to the system bus is lost; ending");
}

bool BusConnection::isTaken(const QString &serviceName)
{
    const QDBusReply<bool> reply =
        QDBusConnection::systemBus().interface()->isServiceRegistered(serviceName);
    return !reply.isValid() || reply.value();
}

BusConnection::Claim BusConnection::claim(const QString &serviceName)
{
    const auto reply = QDBusConnection::systemBus().interface()->registerService(serviceName);
    if (!reply.isValid())
        return Claim::Refused;
    return reply.value() == QDBusConnectionInterface::ServiceRegistered ? Claim::Granted
                                                                        : Claim::Taken;
}

void BusConnection::release(const QString &serviceName)
{
    const auto reply = QDBusConnection::systemBus().interface()->unregisterService(serviceName);
    if (!reply.isValid())
        logger().warning(QStringLiteral("The bus did not take back the name %1").arg(serviceName));
}

void BusConnection::lost()
{
    logger().error(lostMessage());
    QCoreApplication::exit(EXIT_FAILURE);
}

} // namespace zel
