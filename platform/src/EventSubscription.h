#pragma once

#include "zelcore/ZELEvent.h"

#include <QDBusMessage>
#include <QMetaMethod>
#include <QObject>
#include <QPointer>
#include <QString>

namespace zel {

/// The subscription of a slot to an event. It calls the slot for each event with that name.
class EventSubscription : public QObject
{
    Q_OBJECT

public:
    EventSubscription(QString eventName, QObject *receiver, const QMetaMethod &slot,
                      QObject *parent);

    /// Subscribes on the bus. Returns false if there is no bus.
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
