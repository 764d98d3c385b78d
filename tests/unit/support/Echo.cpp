#include "support/Echo.h"

#include <QCoreApplication>
#include <QtTest>

namespace unit {
namespace {

QString clientName()
{
    return QStringLiteral("echo");
}

QString echoInterface()
{
    return QStringLiteral("unit.Echo");
}

/// An abstract socket leaves no file behind.
QString serverAddress()
{
    return QStringLiteral("unix:abstract=progkeys-unit-%1").arg(QCoreApplication::applicationPid());
}

} // namespace

Echo::Echo() : m_server(serverAddress()), m_client(QString())
{
    connect(&m_server, &QDBusServer::newConnection, this, &Echo::listen);
    m_client = QDBusConnection::connectToPeer(m_server.address(), clientName());
    if (!QTest::qWaitFor([this] { return m_isListening; }))
        qFatal("Cannot connect to this process: %s", qPrintable(m_client.lastError().message()));
}

Echo::~Echo()
{
    QDBusConnection::disconnectFromPeer(clientName());
}

QVariant Echo::operator()(const QVariant &value)
{
    return send({value}).arguments().value(0);
}

QDBusMessage Echo::send(const QVariantList &values)
{
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/unit"), echoInterface(),
                                                     QStringLiteral("values"));
    signal.setArguments(values);
    m_received = QDBusMessage();
    const auto hasReceived = [this] { return m_received.type() == QDBusMessage::SignalMessage; };
    if (!m_client.send(signal) || !QTest::qWaitFor(hasReceived))
        qFatal("The signal was not received");
    return m_received;
}

void Echo::listen(const QDBusConnection &connection)
{
    QDBusConnection server = connection;
    m_isListening = server.connect(QString(), QString(), echoInterface(), QString(), this,
                                   SLOT(receive(QDBusMessage)));
}

void Echo::receive(const QDBusMessage &message)
{
    m_received = message;
}

} // namespace unit
