#pragma once

#include "sandbox/BusProbe.h"
#include "sandbox/Startup.h"

namespace sandbox {

/// A message bus of the sandbox's own, with the limits of a system bus, on which everyone may do
/// everything.
class MessageBus
{
public:
    /// Starts `dbus-daemon`, and returns once the probe has reached it. Throws as Startup does.
    MessageBus(const QString &daemon, const Directory &directory, Startup &startup,
               BusProbe &probe);

    static QString name();
    pid_t process() const { return m_process; }
    const QByteArray &address() const { return m_address; }

private:
    QByteArray m_address;
    pid_t m_process;
};

} // namespace sandbox
