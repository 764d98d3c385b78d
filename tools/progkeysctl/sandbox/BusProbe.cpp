#include "sandbox/BusProbe.h"

#include <dbus/dbus.h>

namespace sandbox {

bool BusProbe::connect(const QByteArray &address)
{
    m_connection.reset(dbus_connection_open_private(address.constData(), nullptr));
    if (!m_connection)
        return false;
    dbus_connection_set_exit_on_disconnect(m_connection.get(), FALSE);
    return dbus_bus_register(m_connection.get(), nullptr) == TRUE;
}

bool BusProbe::hasOwner(const QString &name) const
{
    return dbus_bus_name_has_owner(m_connection.get(), name.toUtf8().constData(), nullptr) == TRUE;
}

void BusProbe::Closing::operator()(DBusConnection *connection) const
{
    dbus_connection_close(connection);
    dbus_connection_unref(connection);
}

} // namespace sandbox
