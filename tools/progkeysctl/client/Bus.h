#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QString>
#include <QStringList>

namespace client {

/// Which bus to use.
struct BusChoice
{
    QString kind;    ///< "system", "session" or "address"
    QString address; ///< empty if it is the standard one
};

/// A connection to a bus. The constructor throws a Failure if the bus cannot be reached.
class Bus
{
public:
    /// `timeoutMs` is the maximum wait of each call.
    Bus(const BusChoice &choice, int timeoutMs);
    ~Bus();
    Bus(const Bus &) = delete;
    Bus &operator=(const Bus &) = delete;

    const QDBusConnection &connection() const { return m_connection; }
    int timeoutMs() const { return m_timeoutMs; }
    const BusChoice &choice() const { return m_choice; }

    /// For messages: "the system bus", with its address if that is not the standard one.
    QString description() const;

    /// All names on the bus except unique ones.
    QStringList names() const;
    bool hasOwner(const QString &name) const;

    /// The unique name of the connection that owns the name; empty if there is none.
    QString ownerOf(const QString &name) const;

    /// Calls a method of a module and returns the answer, which may be an error.
    QDBusMessage call(const QString &module, const QString &interface, const QString &method,
                      const QVariantList &arguments = {}) const;

private:
    BusChoice m_choice;
    QDBusConnection m_connection;
    int m_timeoutMs;
};

/// Throws that the module is not running.
[[noreturn]] void throwNotRunning(const Bus &bus, const QString &module);

/// Throws that the connection to the bus is lost.
[[noreturn]] void throwLost(const Bus &bus);

/// Throws that the bus denies access. `what` begins the message.
[[noreturn]] void throwDenied(const Bus &bus, const QString &what);

/// Throws the failure for an error of a call: access denied, timeout, not running, or another.
/// `module` is the short name of the module that was called.
[[noreturn]] void throwCallFailure(const Bus &bus, const QString &module, const QDBusError &error);

} // namespace client
