#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QString>
#include <QStringList>

namespace client {

/// Which bus to talk on.
struct BusChoice
{
    enum Kind { System, Session, Address };
    Kind kind = System;
    QString address; ///< for Kind::Address
};

/// A connection to a bus that is there: the constructor throws a Failure if it cannot be reached.
class Bus
{
public:
    /// `timeoutMs` is how long each call waits for its answer.
    Bus(const BusChoice &choice, int timeoutMs);
    ~Bus();
    Bus(const Bus &) = delete;
    Bus &operator=(const Bus &) = delete;

    const QDBusConnection &connection() const { return m_connection; }
    int timeoutMs() const { return m_timeoutMs; }

    /// "the system bus", with its address where that is not the usual one.
    QString description() const { return m_description; }

    /// Every name on the bus, unique ones left out.
    QStringList names() const;
    bool hasOwner(const QString &name) const;

    /// The unique name of the connection that owns the name; empty if nobody does.
    QString ownerOf(const QString &name) const;

private:
    QDBusConnection m_connection;
    QString m_description;
    int m_timeoutMs;
};

/// Throws that the module is not running.
[[noreturn]] void throwNotRunning(const Bus &bus, const QString &module);

/// Throws that the connection to the bus is lost.
[[noreturn]] void throwLost(const Bus &bus);

/// Throws what a failed call of a peer means to people: access denied, time ran out, not running,
/// or a failure. `module` is the peer's name without what all names begin with.
[[noreturn]] void throwCallFailure(const Bus &bus, const QString &module, const QDBusError &error);

} // namespace client
