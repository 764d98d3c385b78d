#include "client/Bus.h"

#include "outcome/Failure.h"
#include "text/Format.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusConnectionInterface>
#include <QDBusReply>

namespace client {
namespace {

// Connections of the same name would be shared.
const QString ConnectionName = "progkeysctl"_s;

// The name in messages if the bus itself did not answer.
const QString TheBus = "The bus"_s;

bool hasNoOwner(const QDBusError &error)
{
    return error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_s;
}

QDBusConnection connectTo(const BusChoice &choice)
{
    if (!choice.address.isEmpty())
        return QDBusConnection::connectToBus(choice.address, ConnectionName);
    const bool isSession = choice.kind == "session"_s;
    return QDBusConnection::connectToBus(
        isSession ? QDBusConnection::SessionBus : QDBusConnection::SystemBus, ConnectionName);
}

// If the service ends during a call, the bus reports NoReply, as it does after a timeout.
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

Bus::Bus(const BusChoice &choice, int timeoutMs)
    : m_choice(choice), m_connection(connectTo(choice)), m_timeoutMs(timeoutMs)
{
    if (!m_connection.isConnected()) {
        // The bus library does not give a reason for every failure.
        const QString reason = m_connection.lastError().message();
        throw Failure{ExitStatus::Failed,
                      format("Cannot reach %1", description()) +
                          (reason.isEmpty() ? QString() : ": "_s + reason),
                      "Specify the bus of the phone with --address or DBUS_SYSTEM_BUS_ADDRESS. "
                      "\"progkeysctl sandbox\" starts a private phone."_s};
    }
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

QString Bus::description() const
{
    const QString bus =
        m_choice.kind == "address"_s ? "the bus"_s : format("the %1 bus", m_choice.kind);
    return m_choice.address.isEmpty() ? bus : format("%1 at %2", bus, m_choice.address);
}

QDBusMessage Bus::call(const QString &module, const QString &interface, const QString &method,
                       const QVariantList &arguments) const
{
    QDBusMessage call = QDBusMessage::createMethodCall(zel::serviceName(module),
                                                       zel::objectPath(module), interface, method);
    call.setArguments(arguments);
    return m_connection.call(call, QDBus::Block, m_timeoutMs);
}

void throwNotRunning(const Bus &bus, const QString &module)
{
    throw Failure{ExitStatus::NotRunning,
                  format("%1 is not running on %2", module, bus.description()),
                  "Start it. \"progkeysctl wait\" waits until it is running."_s};
}

void throwLost(const Bus &bus)
{
    throw Failure{ExitStatus::Failed, format("The connection to %1 is lost", bus.description()),
                  "Try again when the bus is running: see \"progkeysctl status\"."_s};
}

void throwDenied(const Bus &bus, const QString &what)
{
    throw Failure{
        ExitStatus::AccessDenied, format("%1 on %2", what, bus.description()),
        "Everyone can read keys and actions. To change them, to press keys and to receive events, "
        "you must be root or a member of the group progkeys-admin. Only root can restore."_s};
}

void throwCallFailure(const Bus &bus, const QString &module, const QDBusError &error)
{
    if (error.type() == QDBusError::Disconnected || !bus.connection().isConnected())
        throwLost(bus);
    if (error.type() == QDBusError::AccessDenied)
        throwDenied(bus, format("Access to %1 is denied", module));
    if (isNotRunning(bus, module, error))
        throwNotRunning(bus, module);
    if (error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
        error.type() == QDBusError::TimedOut)
        throw Failure{ExitStatus::TimeRanOut,
                      format("%1 did not answer within %2 s", module, bus.timeoutMs() / 1000.0),
                      "Allow more time with --timeout, or see its log."_s};
    throw Failure{
        ExitStatus::Failed,
        format("%1 answered with an error: %2 (%3)", module, error.message(), error.name()),
        "See its log."_s};
}

} // namespace client
