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

// SLOT() puts the code of a slot, '1', before the signature. The types are asked for here, because
// an invocation does not look at them.
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

bool ZELModule::check()
{
    return true;
}

bool ZELModule::deploy()
{
    return true;
}

bool ZELModule::init()
{
    return true;
}

bool ZELModule::start()
{
    return true;
}

void ZELModule::presentation_loaded() {}

void ZELModule::presentation_stop() {}

bool ZELModule::stop()
{
    return true;
}

bool ZELModule::preSaveForSaveRestore()
{
    return true;
}

bool ZELModule::postRestoreForSaveRestore()
{
    return true;
}

bool ZELModule::restoreDefault()
{
    return true;
}

bool ZELModule::restoreFactory()
{
    return true;
}

MapQStringCapability ZELModule::getCapabilities()
{
    return {};
}

MapQStringCapability ZELModule::getCapabilities(int /*listId*/)
{
    return {};
}

Capability ZELModule::getCapability(const QString & /*name*/)
{
    return {};
}

Capability ZELModule::getCapability(int /*listId*/, const QString & /*name*/)
{
    return {};
}

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
    static_cast<void>(subscription.release()); // this module, its parent, owns it now
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
    // It may have taken seconds, and what has been heard of signals is as old.
    static_cast<void>(ZELApplication::isEnding());
    if (m_runner)
        m_runner->feedWatchdog();
    return reply;
}

QString ZELModule::getModuleName() const
{
    return m_name;
}

QDBusAbstractAdaptor *ZELModule::getAdaptor() const
{
    return m_adaptor;
}
