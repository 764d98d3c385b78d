#include "support/BusClient.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>

namespace unit {
namespace {

QString nextName()
{
    static int number = 0;
    return QStringLiteral("unit-client-%1").arg(++number);
}

} // namespace

BusClient::BusClient() : m_name(nextName())
{
    const QDBusConnection opened =
        QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"), m_name);
    if (!opened.isConnected())
        qFatal("Cannot reach the private bus");
}

BusClient::~BusClient()
{
    QDBusConnection::disconnectFromBus(m_name);
}

QDBusConnection BusClient::connection() const
{
    return QDBusConnection(m_name);
}

void BusClient::settle() const
{
    const QDBusReply<QString> reply = connection().interface()->call(QStringLiteral("GetId"));
    if (!reply.isValid())
        qFatal("The private bus does not answer");
}

} // namespace unit
