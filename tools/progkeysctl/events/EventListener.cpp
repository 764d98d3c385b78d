#include "events/EventListener.h"

#include "client/ProgrammableKeys.h"
#include "outcome/Failure.h"
#include "output/Output.h"
#include "text/Format.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELEventCodec.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace events {
namespace {

const QString ProbeName = "PROGKEYSCTL_PROBE"_s;

} // namespace

EventListener::EventListener(const client::Bus &bus) : m_bus(bus)
{
    QDBusConnection connection = bus.connection();
    const bool hears =
        connection.connect(QString(), QString(), zel::eventsInterface(), zel::eventSignal(), this,
                           SLOT(receive(QDBusMessage))) &&
        connection.connect(QString(), "/org/freedesktop/DBus/Local"_s,
                           "org.freedesktop.DBus.Local"_s, "Disconnected"_s, this, SLOT(lose()));
    if (!hears)
        throw Failure{
            ExitStatus::Failed, format("Cannot receive events on %1", bus.description()), {}};
    requireAccess();
}

// A policy drops events silently. So an event like those of the service is sent to this connection
// itself; it is subject to the same rules.
void EventListener::requireAccess()
{
    QDBusMessage probe = QDBusMessage::createTargetedSignal(
        m_bus.connection().baseService(), zel::objectPath(client::ProgrammableKeys::moduleName()),
        zel::eventsInterface(), zel::eventSignal());
    ZELEvent event;
    event.setEvtName(ProbeName);
    if (const auto message = zel::encodeEvent(probe.path(), event))
        probe.setArguments(message->arguments());
    m_bus.connection().send(probe);
    // The bus answers after it has delivered the probe, and after the subscription is in place.
    m_bus.hasOwner(zel::serviceName(client::ProgrammableKeys::moduleName()));
    QCoreApplication::sendPostedEvents(this);
    if (!m_hasAccess)
        client::throwDenied(m_bus, "Receiving events is denied"_s);
}

bool EventListener::listen(int timeoutMs, const std::function<bool(const ReceivedEvent &)> &take)
{
    bool hasExpired = false;
    QTimer timer;
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, [&hasExpired] { hasExpired = true; });
    if (timeoutMs >= 0)
        timer.start(timeoutMs);
    QEventLoop loop;
    for (;;) {
        while (!m_waiting.isEmpty())
            if (take(m_waiting.takeFirst()))
                return true;
        if (m_isLost)
            client::throwLost(m_bus);
        if (hasExpired)
            return false;
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void EventListener::receive(const QDBusMessage &message)
{
    const std::optional<ZELEvent> event = zel::decodeEvent(message);
    if (event && event->getEvtName() == ProbeName &&
        message.service() == m_bus.connection().baseService()) {
        m_hasAccess = true;
        return;
    }
    const QString module = message.path().section(QLatin1Char('/'), -1);
    if (event)
        m_waiting.append({*event, message.service(), module});
    else
        output::warn(format("%1 (%2) sent an event with the invalid signature \"%3\"", module,
                            message.service(), message.signature()));
}

void EventListener::lose()
{
    m_isLost = true;
}

} // namespace events
