#include "client/Phone.h"

#include "outcome/Failure.h"
#include "text/Format.h"

#include <QDBusConnectionInterface>

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

} // namespace

Phone::Phone(const BusChoice &choice, int timeoutMs)
    : m_choice(choice), m_connection(connectTo(choice)), m_timeoutMs(timeoutMs)
{
    registerDBusKey();
    registerDBusAction();
    registerZELTypes();
    if (!m_connection.isConnected()) {
        // The bus library does not give a reason for every failure.
        const QString reason = m_connection.lastError().message();
        throw Failure{ExitStatus::Failed,
                      format("Cannot reach %1", busName()) +
                          (reason.isEmpty() ? QString() : ": "_s + reason),
                      "Specify the bus of the phone with --address or DBUS_SYSTEM_BUS_ADDRESS. "
                      "\"progkeysctl sandbox\" starts a private phone."_s};
    }
    m_connection.interface()->setTimeout(timeoutMs);
}

Phone::~Phone()
{
    QDBusConnection::disconnectFromBus(ConnectionName);
}

QString Phone::busName() const
{
    const QString bus =
        m_choice.kind == "address"_s ? "the bus"_s : format("the %1 bus", m_choice.kind);
    return m_choice.address.isEmpty() ? bus : format("%1 at %2", bus, m_choice.address);
}

QStringList Phone::modules() const
{
    const QDBusReply<QStringList> reply = m_connection.interface()->registeredServiceNames();
    if (!reply.isValid())
        throwCallFailure(TheBus, reply.error());
    const QString prefix = zel::serviceName(QString());
    QStringList modules;
    for (const QString &name : reply.value())
        if (name.startsWith(prefix))
            modules.append(name.mid(prefix.size()));
    modules.sort();
    return modules;
}

QString Phone::connectionOf(const QString &module) const
{
    const QDBusReply<QString> reply =
        m_connection.interface()->serviceOwner(zel::serviceName(module));
    if (!reply.isValid() && !hasNoOwner(reply.error()))
        throwCallFailure(TheBus, reply.error());
    return reply.value();
}

void Phone::runHook(const QString &method) const
{
    const QDBusMessage reply = callModule(Service, zel::lifecycleInterface(), method);
    if (reply.type() != QDBusMessage::ReplyMessage)
        throwCallFailure(Service, QDBusError(reply));
}

std::optional<QString> Phone::setting(const QString &name) const
{
    const QDBusReply<QString> reply =
        callModule("SettingsManager"_s, zel::operationsInterface(), "getSettingValue"_s, {name});
    return reply.isValid() ? std::optional(reply.value()) : std::nullopt;
}

QDBusMessage Phone::callModule(const QString &module, const QString &interface,
                               const QString &method, const QVariantList &arguments) const
{
    QDBusMessage call = QDBusMessage::createMethodCall(zel::serviceName(module),
                                                       zel::objectPath(module), interface, method);
    call.setArguments(arguments);
    return m_connection.call(call, QDBus::Block, m_timeoutMs);
}

void Phone::throwNotRunning(const QString &module) const
{
    throw Failure{ExitStatus::NotRunning, format("%1 is not running on %2", module, busName()),
                  "Start it. \"progkeysctl wait\" waits until it is running."_s};
}

void Phone::throwLost() const
{
    throw Failure{ExitStatus::Failed, format("The connection to %1 is lost", busName()),
                  "Try again when the bus is running: see \"progkeysctl status\"."_s};
}

void Phone::throwDenied(const QString &what) const
{
    throw Failure{
        ExitStatus::AccessDenied, format("%1 on %2", what, busName()),
        "Everyone can read keys and actions. To change them, to press keys and to receive events, "
        "you must be root or a member of the group progkeys-admin. Only root can restore."_s};
}

// If the service ends during a call, the bus reports NoReply, as it does after a timeout.
bool Phone::isNotRunning(const QString &module, const QDBusError &error) const
{
    if (error.type() == QDBusError::ServiceUnknown || hasNoOwner(error))
        return true;
    if (error.type() != QDBusError::NoReply || module == TheBus)
        return false;
    const QDBusReply<bool> isThere =
        m_connection.interface()->isServiceRegistered(zel::serviceName(module));
    return isThere.isValid() && !isThere.value();
}

void Phone::throwCallFailure(const QString &module, const QDBusError &error) const
{
    if (error.type() == QDBusError::Disconnected || !m_connection.isConnected())
        throwLost();
    if (error.type() == QDBusError::AccessDenied)
        throwDenied(format("Access to %1 is denied", module));
    if (isNotRunning(module, error))
        throwNotRunning(module);
    if (error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
        error.type() == QDBusError::TimedOut)
        throw Failure{ExitStatus::TimeRanOut,
                      format("%1 did not answer within %2 s", module, m_timeoutMs / 1000.0),
                      "Allow more time with --timeout, or see its log."_s};
    throw Failure{
        ExitStatus::Failed,
        format("%1 answered with an error: %2 (%3)", module, error.message(), error.name()),
        "See its log."_s};
}

} // namespace client
