#include "PrivateLine.h"

#include "Requirement.h"

#include <QDBusServer>

#include <cstdio>
#include <utility>

namespace fuzz {
namespace {

constexpr int StepMs = 5;
constexpr int ReplyLimitMs = 20'000;

// Qt warns of every empty signature, which is a valid value.
void showGraveMessages(QtMsgType type, const QMessageLogContext & /*context*/, const QString &text)
{
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", qPrintable(text));
}

} // namespace

PrivateLine::PrivateLine(SetUp setUp) : m_setUp(std::move(setUp))
{
    qInstallMessageHandler(showGraveMessages);
    start();
    m_ready.acquire();
    m_connection = dbus_connection_open_private(m_address.c_str(), nullptr);
    require(m_connection != nullptr, "no connection to the other thread");
    dbus_connection_set_exit_on_disconnect(m_connection, FALSE);
    while (!m_ready.tryAcquire())
        dbus_connection_read_write(m_connection, StepMs);
}

PrivateLine::~PrivateLine()
{
    quit();
    wait();
    dbus_connection_close(m_connection);
    dbus_connection_unref(m_connection);
}

void PrivateLine::run()
{
    // An abstract socket leaves no file behind, however the process ends.
    QDBusServer server(
        QStringLiteral("unix:abstract=progkeys-fuzz-%1").arg(QCoreApplication::applicationPid()));
    m_address = server.address().toStdString();
    QObject::connect(&server, &QDBusServer::newConnection, &server,
                     [this, &server](const QDBusConnection &connection) {
                         m_setUp(connection, &server);
                         m_ready.release();
                     });
    m_ready.release();
    exec();
}

void PrivateLine::send(DBusMessage *message)
{
    require(dbus_connection_send(m_connection, message, nullptr), "out of memory");
    dbus_connection_flush(m_connection);
    require(dbus_connection_get_is_connected(m_connection), "the connection is lost");
}

DBusMessage *PrivateLine::call(DBusMessage *message)
{
    DBusPendingCall *pending = nullptr;
    require(dbus_connection_send_with_reply(m_connection, message, &pending, ReplyLimitMs) &&
                pending != nullptr,
            "the call cannot be sent");
    dbus_pending_call_block(pending);
    DBusMessage *reply = dbus_pending_call_steal_reply(pending);
    dbus_pending_call_unref(pending);
    require(dbus_connection_get_is_connected(m_connection), "the connection is lost");
    require(reply != nullptr, "no reply");
    return reply;
}

} // namespace fuzz
