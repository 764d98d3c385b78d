#include "client/Settings.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusMessage>
#include <QDBusReply>

namespace client {

std::optional<QString> readSetting(const Bus &bus, const QString &name)
{
    const QString module = QStringLiteral("SettingsManager");
    QDBusMessage call = QDBusMessage::createMethodCall(
        zel::serviceName(module), zel::objectPath(module), zel::operationsInterface(),
        QStringLiteral("getSettingValue"));
    call << name;
    const QDBusReply<QString> reply = bus.connection().call(call, QDBus::Block, bus.timeoutMs());
    if (!reply.isValid())
        return std::nullopt;
    return reply.value();
}

} // namespace client
