#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServer>
#include <QObject>
#include <QVariant>

namespace unit {

/// Sends values through the bus library and back, over a direct connection that needs no bus.
class Echo : public QObject
{
    Q_OBJECT

public:
    Echo();
    ~Echo() override;

    /// Sends the value and returns it as the receiver gets it.
    QVariant operator()(const QVariant &value);
    /// Sends a signal of these values and returns it as the receiver gets it.
    QDBusMessage send(const QVariantList &values);

    /// The type of the last message on the wire.
    QString signature() const { return m_received.signature(); }

private slots:
    void listen(const QDBusConnection &connection);
    void receive(const QDBusMessage &message);

private:
    QDBusServer m_server;
    QDBusConnection m_client;
    QDBusMessage m_received;
    bool m_isListening = false;
};

} // namespace unit
