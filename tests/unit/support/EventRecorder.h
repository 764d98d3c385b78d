#pragma once

#include "support/BusClient.h"

#include <zelcore/ZELEvent.h>

#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QStringList>

namespace unit {

/// Sees every platform event on the bus, as another process would. It reads the wire format itself
/// and does not rely on the platform library for it.
class EventRecorder : public QObject
{
    Q_OBJECT

public:
    EventRecorder();

    /// All events that this process sent since the last call, in order.
    QList<ZELEvent> take();
    /// The same, their names alone.
    QStringList takeNames();

    /// The signals that carried the events of the last `take`.
    QList<QDBusMessage> messages() const;

private slots:
    void receive(const QDBusMessage &message);

private:
    void waitForFence();

    BusClient m_client;
    QList<QDBusMessage> m_received;
    QList<QDBusMessage> m_taken;
    bool m_fenceSeen = false;
};

/// Sends an event as any process may, with the given signal arguments.
void sendSignal(const QDBusConnection &connection, const QList<QVariant> &arguments);

/// The event as text: its name, then a line for each argument.
QStringList describe(const ZELEvent &event);

} // namespace unit
