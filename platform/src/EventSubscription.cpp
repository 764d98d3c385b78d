#include "EventSubscription.h"

#include "zelcore/ZELApplication.h"
#include "zelcore/ZELBusNames.h"
#include "zelcore/ZELEventCodec.h"
#include "zelcore/ZELException.h"
#include "zelcore/ZELLogger.h"

#include <QDBusConnection>

#include <utility>

namespace zel {

EventSubscription::EventSubscription(QString eventName, QObject *receiver, const QMetaMethod &slot,
                                     QObject *parent)
    : QObject(parent), m_eventName(std::move(eventName)), m_receiver(receiver), m_slot(slot)
{
}

bool EventSubscription::connectToBus()
{
    // The match has no signature, so that events with another signature also arrive and are logged.
    return QDBusConnection::systemBus().connect(QString(), QString(), eventsInterface(),
                                                eventSignal(), {m_eventName}, QString(), this,
                                                SLOT(receive(QDBusMessage)));
}

void EventSubscription::receive(const QDBusMessage &message)
{
    const auto event = decodeEvent(message);
    if (!event) {
        logger().warning(
            QStringLiteral("Event %1 from %2 dropped: its signature is \"%3\", not \"sa(svb)\"")
                .arg(m_eventName, message.service(), message.signature()));
        return;
    }
    if (m_receiver)
        deliver(*event);
}

// An exception must not pass through the bus library.
void EventSubscription::deliver(const ZELEvent &event)
{
    try {
        if (!m_slot.invoke(m_receiver, Qt::DirectConnection, Q_ARG(ZELEvent, event)))
            logger().error(QStringLiteral("Event %1 could not be delivered").arg(m_eventName));
    } catch (ZELException *exception) {
        ZELApplication::dispose(exception);
    }
}

} // namespace zel
