#pragma once

#include "zelcore/ZELEvent.h"

#include <QDBusMessage>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QString>

namespace zel {

/// One slot's interest in one event: a match on the bus, and the call of the slot for each event
/// that comes.
class EventSubscription : public QObject
{
    Q_OBJECT

public:
    EventSubscription(QString eventName, QObject *receiver, const QMetaMethod &slot,
                      QObject *parent);

    /// Asks the bus for the event; false if there is no bus.
    bool connectToBus();

private slots:
    void receive(const QDBusMessage &message);

private:
    void deliver(const ZELEvent &event);

    QString m_eventName;
    QPointer<QObject> m_receiver;
    QMetaMethod m_slot;
};

} // namespace zel
