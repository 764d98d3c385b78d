#include "zelcore/ZELModule.h"

#include "EventSubscription.h"
#include "ModuleRunner.h"
#include "zelcore/ZELApplication.h"
#include "zelcore/ZELBusNames.h"
#include "zelcore/ZELEventCodec.h"
#include "zelcore/ZELLogger.h"

#include <QDBusConnection>
#include <QMetaMethod>

#include <utility>

namespace {

constexpr int RemoteCallLimitMs = 5000;

// SLOT() adds '1', the code of a slot, before the signature. Check the type of the parameter here,
// because QMetaMethod::invoke does not check it.
QMetaMethod findSlot(const QObject *receiver, const char *slot)
{
    if (!receiver || !slot || *slot != '1')
        return {};
    const QMetaObject *type = receiver->metaObject();
    const QMetaMethod method =
        type->method(type->indexOfMethod(QMetaObject::normalizedSignature(slot + 1).constData()));
    const bool takesEvent = method.parameterTypes() == QList<QByteArray>{"ZELEvent"};
    return takesEvent ? method : QMetaMethod();
}

} // namespace

ZELModule::ZELModule(QString name) : m_name(std::move(name))
{
    registerZELTypes();
    if (qobject_cast<ZELApplication *>(QCoreApplication::instance()))
        m_runner = std::make_unique<zel::ModuleRunner>(*this);
}

ZELModule::~ZELModule() = default;

bool ZELModule::subscribeEvent(const QString &eventName, QObject *receiver, const char *slot)
{
    const QMetaMethod method = findSlot(receiver, slot);
    if (!method.isValid()) {
        logger().error(QStringLiteral("Cannot subscribe to event %1: there is no slot %2")
                           .arg(eventName, QLatin1String(slot)));
        return false;
    }
    auto subscription = std::make_unique<zel::EventSubscription>(eventName, receiver, method, this);
    if (!subscription->connectToBus()) {
        logger().error(
            QStringLiteral("Cannot subscribe to event %1: the bus refused").arg(eventName));
        return false;
    }
    static_cast<void>(subscription.release()); // belongs to this module now
    return true;
}

bool ZELModule::notifyEvent(const ZELEvent &event)
{
    const auto message = zel::encodeEvent(zel::objectPath(m_name), event);
    return message && QDBusConnection::systemBus().send(*message);
}

QDBusMessage ZELModule::syncRemoteCall(const QString &moduleName, const QString &method,
                                       const QList<QVariant> &arguments)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(zel::serviceName(moduleName), zel::objectPath(moduleName),
                                       zel::operationsInterface(), method);
    call.setArguments(arguments);
    QDBusMessage reply = QDBusConnection::systemBus().call(call, QDBus::Block, RemoteCallLimitMs);
    // The call may have taken seconds. Check for a termination signal.
    static_cast<void>(ZELApplication::isEnding());
    if (m_runner)
        m_runner->feedWatchdog();
    return reply;
}
