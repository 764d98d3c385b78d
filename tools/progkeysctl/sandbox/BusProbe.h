#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct DBusConnection;

namespace sandbox {

/// A connection that looks who is on a bus. It has no thread of its own, so that this process may
/// go on starting others.
class BusProbe
{
public:
    /// Whether the bus can be reached.
    bool connect(const QByteArray &address);

    bool hasOwner(const QString &name) const;

private:
    struct Closing
    {
        void operator()(DBusConnection *connection) const;
    };
    std::unique_ptr<DBusConnection, Closing> m_connection;
};

} // namespace sandbox
