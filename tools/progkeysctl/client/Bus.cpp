#include "client/Bus.h"

#include "outcome/Failure.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusConnectionInterface>
#include <QDBusReply>

namespace client {
namespace {

// A name of its own: a connection of the same name would be shared.
const QString ConnectionName = QStringLiteral("progkeysctl");

// Who did not answer, where it was the bus itself.
const QString TheBus = QStringLiteral("The bus");

bool hasNoOwner(const QDBusError &error)
{
    return error.name() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner");
}

QDBusConnection connectTo(const BusChoice &choice)
{
    switch (choice.kind) {
    case BusChoice::Session:
        return QDBusConnection::connectToBus(QDBusConnection::SessionBus, ConnectionName);
    case BusChoice::Address:
        return QDBusConnection::connectToBus(choice.address, ConnectionName);
    default:
        return QDBusConnection::connectToBus(QDBusConnection::SystemBus, ConnectionName);
    }
}

QString describe(const BusChoice &choice)
{
    const auto withAddress = [](const QString &text, const char *variable) {
        const QString address = qEnvironmentVariable(variable);
        return address.isEmpty() ? text : QStringLiteral("%1 at %2").arg(text, address);
    };
    switch (choice.kind) {
    case BusChoice::Session:
        return withAddress(QStringLiteral("the session bus"), "DBUS_SESSION_BUS_ADDRESS");
    case BusChoice::Address:
        return QStringLiteral("the bus at %1").arg(choice.address);
    default:
        return withAddress(QStringLiteral("the system bus"), "DBUS_SYSTEM_BUS_ADDRESS");
    }
}

// The bus library has no reason for every failure.
QString unreachable(const QString &bus, const QString &reason)
{
    return reason.isEmpty() ? QStringLiteral("Cannot reach %1").arg(bus)
                            : QStringLiteral("Cannot reach %1: %2").arg(bus, reason);
}

} // namespace

Bus::Bus(const BusChoice &choice, int timeoutMs)
    : m_connection(connectTo(choice)), m_description(describe(choice)), m_timeoutMs(timeoutMs)
{
    if (!m_connection.isConnected())
        throw Failure{ExitStatus::Failed,
                      unreachable(m_description, m_connection.lastError().message()),
                      QStringLiteral("Say where the phone's bus is with --address or in "
                                     "DBUS_SYSTEM_BUS_ADDRESS; \"progkeysctl sandbox\" makes a "
                                     "phone to try.")};
    m_connection.interface()->setTimeout(timeoutMs);
}

Bus::~Bus()
{
    QDBusConnection::disconnectFromBus(ConnectionName);
}

QStringList Bus::names() const
{
    const QDBusReply<QStringList> reply = m_connection.interface()->registeredServiceNames();
    if (!reply.isValid())
        throwCallFailure(*this, TheBus, reply.error());
    QStringList names;
    const QStringList all = reply.value();
    for (const QString &name : all)
        if (!name.startsWith(QLatin1Char(':')))
            names.append(name);
    names.sort();
    return names;
}

bool Bus::hasOwner(const QString &name) const
{
    return !ownerOf(name).isEmpty();
}

QString Bus::ownerOf(const QString &name) const
{
    const QDBusReply<QString> reply = m_connection.interface()->serviceOwner(name);
    if (!reply.isValid() && !hasNoOwner(reply.error()))
        throwCallFailure(*this, TheBus, reply.error());
    return reply.value();
}

namespace {

// The service's last words are lost if it ends while it is called; the bus then says NoReply at
// once, as it does when nothing came in time. A bus that does not answer either leaves it open.
bool isNotRunning(const Bus &bus, const QString &module, const QDBusError &error)
{
    if (error.type() == QDBusError::ServiceUnknown || hasNoOwner(error))
        return true;
    if (error.type() != QDBusError::NoReply || module == TheBus)
        return false;
    const QDBusReply<bool> isThere =
        bus.connection().interface()->isServiceRegistered(zel::serviceName(module));
    return isThere.isValid() && !isThere.value();
}

} // namespace

void throwNotRunning(const Bus &bus, const QString &module)
{
    throw Failure{ExitStatus::NotRunning,
                  QStringLiteral("%1 is not running on %2").arg(module, bus.description()),
                  QStringLiteral("Start it; \"progkeysctl wait\" tells when it is up.")};
}

void throwLost(const Bus &bus)
{
    throw Failure{ExitStatus::Failed,
                  QStringLiteral("The connection to %1 is lost").arg(bus.description()),
                  QStringLiteral("Try again once the bus and the service are up; \"progkeysctl "
                                 "status\" tells what is there.")};
}

void throwCallFailure(const Bus &bus, const QString &module, const QDBusError &error)
{
    if (error.type() == QDBusError::Disconnected || !bus.connection().isConnected())
        throwLost(bus);
    if (error.type() == QDBusError::AccessDenied)
        throw Failure{ExitStatus::AccessDenied,
                      QStringLiteral("%1 does not let you do this: %2")
                          .arg(bus.description(), error.message()),
                      QStringLiteral("Run it as a user whom the bus's policy allows to call %1.")
                          .arg(module)};
    if (isNotRunning(bus, module, error))
        throwNotRunning(bus, module);
    if (error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
        error.type() == QDBusError::TimedOut)
        throw Failure{ExitStatus::TimeRanOut,
                      QStringLiteral("%1 did not answer within %2 s")
                          .arg(module, QString::number(bus.timeoutMs() / 1000.0)),
                      QStringLiteral("Give it longer with --timeout, or look into its log.")};
    throw Failure{ExitStatus::Failed,
                  QStringLiteral("%1 answered with an error: %2 (%3)")
                      .arg(module, error.message(), error.name()),
                  QStringLiteral("Its log says more.")};
}

} // namespace client
