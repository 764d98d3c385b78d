#include "client/ProgrammableKeys.h"

#include "text/Format.h"

namespace client {

ProgrammableKeys::ProgrammableKeys(const Bus &bus) : m_bus(bus)
{
    registerDBusKey();
    registerDBusAction();
    registerZELTypes();
}

QString ProgrammableKeys::moduleName()
{
    return "ZelProgrammableKeys"_s;
}

bool ProgrammableKeys::isRunning() const
{
    return m_bus.hasOwner(zel::serviceName(moduleName()));
}

void ProgrammableKeys::runHook(const QString &method) const
{
    const QDBusMessage reply = m_bus.call(moduleName(), zel::lifecycleInterface(), method);
    if (reply.type() != QDBusMessage::ReplyMessage)
        throwCallFailure(m_bus, moduleName(), QDBusError(reply));
}

std::optional<QString> ProgrammableKeys::setting(const QString &name) const
{
    const QDBusReply<QString> reply =
        m_bus.call("SettingsManager"_s, zel::operationsInterface(), "getSettingValue"_s, {name});
    return reply.isValid() ? std::optional(reply.value()) : std::nullopt;
}

} // namespace client
