#include "ServiceManager.h"

#include "zelcore/ZELLogger.h"

#include <systemd/sd-daemon.h>

namespace zel {
namespace {

void tell(const QByteArray &state)
{
    static bool hasFailed = false;
    // 0 keeps NOTIFY_SOCKET set for later notifications.
    const int result = sd_notify(0, state.constData());
    if (result < 0 && !hasFailed)
        logger().warning(
            QStringLiteral("Cannot tell the service manager: %1").arg(qt_error_string(-result)));
    hasFailed = result < 0;
}

} // namespace

void tellReady(const QString &status)
{
    tell(QByteArrayLiteral("READY=1\nSTATUS=") + status.toUtf8());
}

void tellStopping()
{
    tell(QByteArrayLiteral("STOPPING=1\nSTATUS=Ending"));
}

void tellAlive()
{
    tell(QByteArrayLiteral("WATCHDOG=1"));
}

} // namespace zel
