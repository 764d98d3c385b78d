#pragma once

#include <QDBusConnection>
#include <QString>

namespace unit {

/// A connection to the private bus besides the process's own, as another process would have it.
class BusClient
{
public:
    BusClient();
    ~BusClient();
    BusClient(const BusClient &) = delete;
    BusClient &operator=(const BusClient &) = delete;

    QDBusConnection connection() const;

    /// Returns when the bus has handled everything that this connection asked for before.
    void settle() const;

private:
    QString m_name;
};

} // namespace unit
