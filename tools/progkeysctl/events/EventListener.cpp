#include "events/EventListener.h"

#include "outcome/Failure.h"
#include "output/Output.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELEventCodec.h>

#include <QEventLoop>
#include <QTimer>

namespace events {

EventListener::EventListener(const client::Bus &bus) : m_bus(bus)
{
    QDBusConnection connection = bus.connection();
    const bool hears = connection.connect(QString(), QString(), zel::eventsInterface(),
                                          zel::eventSignal(), this, SLOT(receive(QDBusMessage))) &&
                       connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                                          QStringLiteral("org.freedesktop.DBus.Local"),
                                          QStringLiteral("Disconnected"), this, SLOT(lose()));
    if (!hears)
        throw Failure{
            ExitStatus::Failed, QStringLiteral("Cannot listen on %1").arg(bus.description()), {}};
    // Asked of the bus after the match, and so answered after it stands.
    bus.hasOwner(zel::serviceName(QString()) + QStringLiteral("Any"));
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
    const QString module = message.path().section(QLatin1Char('/'), -1);
    if (event)
        m_waiting.append({*event, message.service(), module});
    else
        output::warn(QStringLiteral("%1 (%2) sent an event of the wrong signature \"%3\"")
                         .arg(module, message.service(), message.signature()));
}

void EventListener::lose()
{
    m_isLost = true;
}

} // namespace events
