#pragma once

#include "client/Bus.h"

#include <zelcore/ZELEvent.h>

#include <QDBusMessage>
#include <QObject>

#include <functional>
#include <optional>

namespace events {

/// An event as it came.
struct ReceivedEvent
{
    ZELEvent event;
    QString sender; ///< its unique name on the bus
    QString module; ///< the module whose object sent it
};

/// Hears every event on the bus, whoever sends it, from the moment it is made.
class EventListener : public QObject
{
    Q_OBJECT

public:
    /// Throws a Failure if the bus does not let it listen.
    explicit EventListener(const client::Bus &bus);

    /// Hands over each event as it comes, until `take` says true: that is enough. What came before
    /// is handed over first. False if the time ran out first; `timeoutMs` below 0 is no limit.
    /// Throws a Failure if the bus is lost.
    bool listen(int timeoutMs, const std::function<bool(const ReceivedEvent &)> &take);

private slots:
    void receive(const QDBusMessage &message);
    void lose();

private:
    const client::Bus &m_bus;
    QList<ReceivedEvent> m_waiting;
    bool m_isLost = false;
};

} // namespace events
