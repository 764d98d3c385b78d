#include "events/EventListener.h"

#include "outcome/Failure.h"
#include "output/Output.h"
#include "text/Format.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELEventCodec.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <optional>

namespace events {
namespace {

const QString ProbeName = "PROGKEYSCTL_PROBE"_s;

} // namespace

EventListener::EventListener(const client::Phone &phone) : m_phone(phone)
{
    QDBusConnection connection = phone.connection();
    const bool hears =
        connection.connect(QString(), QString(), zel::eventsInterface(), zel::eventSignal(), this,
                           SLOT(receive(QDBusMessage))) &&
        connection.connect(QString(), "/org/freedesktop/DBus/Local"_s,
                           "org.freedesktop.DBus.Local"_s, "Disconnected"_s, this, SLOT(lose()));
    if (!hears)
        throw Failure{ExitStatus::Failed, format("Cannot receive events on %1", phone.busName())};
    requireAccess();
}

// A policy drops events silently. So an event like those of the service is sent to this connection
// itself; it is subject to the same rules.
void EventListener::requireAccess()
{
    QDBusMessage probe = QDBusMessage::createTargetedSignal(
        m_phone.connection().baseService(), zel::objectPath(client::Service),
        zel::eventsInterface(), zel::eventSignal());
    ZELEvent event;
    event.setEvtName(ProbeName);
    if (const auto message = zel::encodeEvent(probe.path(), event))
        probe.setArguments(message->arguments());
    m_phone.connection().send(probe);
    // The bus answers after it has delivered the probe, and after the subscription is in place.
    m_phone.isRunning(client::Service);
    QCoreApplication::sendPostedEvents(this);
    if (!m_hasAccess)
        m_phone.throwDenied("Receiving events is denied"_s);
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
            m_phone.throwLost();
        if (hasExpired)
            return false;
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void EventListener::receive(const QDBusMessage &message)
{
    const std::optional<ZELEvent> event = zel::decodeEvent(message);
    if (event && event->getEvtName() == ProbeName &&
        message.service() == m_phone.connection().baseService()) {
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
