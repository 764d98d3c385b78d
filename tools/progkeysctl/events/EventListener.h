#pragma once

#include "client/Phone.h"

#include <zelcore/ZELEvent.h>

#include <QDBusMessage>
#include <QObject>

#include <functional>

namespace events {

/// An event from the bus.
struct ReceivedEvent
{
    ZELEvent event;
    QString sender; ///< unique name on the bus
    QString module; ///< the module whose object sent it
};

/// Receives all events on the bus, of any sender, from its construction on.
class EventListener : public QObject
{
    Q_OBJECT

public:
    /// Throws a Failure if the bus refuses the subscription, or if its policy keeps the events of
    /// the service from this user.
    explicit EventListener(const client::Phone &phone);

    /// Passes each event to `take` until it returns true, beginning with those that arrived before.
    /// Returns false after a timeout; a negative `timeoutMs` is no limit. Throws a Failure if the
    /// bus is lost.
    bool listen(int timeoutMs, const std::function<bool(const ReceivedEvent &)> &take);

private slots:
    void receive(const QDBusMessage &message);
    void lose();

private:
    void requireAccess();

    const client::Phone &m_phone;
    QList<ReceivedEvent> m_waiting;
    bool m_hasAccess = false;
    bool m_isLost = false;
};

} // namespace events
