#include "client/Lifecycle.h"

#include "client/ProgrammableKeys.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusMessage>

namespace client {

void runHook(const Bus &bus, const QString &method)
{
    const QString module = ProgrammableKeys::moduleName();
    const QDBusMessage call = QDBusMessage::createMethodCall(
        zel::serviceName(module), zel::objectPath(module), zel::lifecycleInterface(), method);
    const QDBusMessage reply = bus.connection().call(call, QDBus::Block, bus.timeoutMs());
    if (reply.type() != QDBusMessage::ReplyMessage)
        throwCallFailure(bus, module, QDBusError(reply));
}

} // namespace client
