#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServer>
#include <QObject>
#include <QVariant>

namespace unit {

/// Sends values to this process itself through the bus library, over a direct connection without a
/// bus.
class Echo : public QObject
{
    Q_OBJECT

public:
    Echo();
    ~Echo() override;

    /// Sends the value and returns the received one.
    QVariant operator()(const QVariant &value);
    /// Sends a signal with these values and returns the received one.
    QDBusMessage send(const QVariantList &values);

    /// The signature of the last received message.
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
