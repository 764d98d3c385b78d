#include "WireClient.h"

#include "SubjectProcess.h"

#include <dbus/dbus.h>

namespace {

constexpr int StepMs = 20000;

DBusMessage *newCall(const QString &interface, const QString &method)
{
    return dbus_message_new_method_call(SubjectProcess::serviceName().toUtf8().constData(),
                                        SubjectProcess::objectPath().toUtf8().constData(),
                                        interface.toUtf8().constData(),
                                        method.toUtf8().constData());
}

DBusMessage *newCall(const QString &interface, const QString &method, const QString &text)
{
    DBusMessage *call = newCall(interface, method);
    const QByteArray bytes = text.toUtf8();
    const char *argument = bytes.constData();
    dbus_message_append_args(call, DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID);
    return call;
}

QString describe(DBusMessage *answer)
{
    if (dbus_message_get_type(answer) == DBUS_MESSAGE_TYPE_METHOD_RETURN)
        return QStringLiteral("reply");
    const char *text = "";
    dbus_message_get_args(answer, nullptr, DBUS_TYPE_STRING, &text, DBUS_TYPE_INVALID);
    return QStringLiteral("error %1: %2")
        .arg(QLatin1String(dbus_message_get_error_name(answer)), QString::fromUtf8(text));
}

} // namespace

WireClient::WireClient()
    : m_connection(
          dbus_connection_open_private(qgetenv("DBUS_SYSTEM_BUS_ADDRESS").constData(), nullptr))
{
    if (!m_connection || !dbus_bus_register(m_connection, nullptr))
        qFatal("Cannot reach the private bus");
    dbus_connection_set_exit_on_disconnect(m_connection, FALSE);
}

WireClient::~WireClient()
{
    dbus_connection_close(m_connection);
    dbus_connection_unref(m_connection);
}

QStringList WireClient::answers(const QString &interface, const QString &method,
                                const QString &text, bool wantsReply)
{
    return answersUntilFence(send(newCall(interface, method, text), wantsReply));
}

QStringList WireClient::answers(const QString &interface, const QString &method)
{
    return answersUntilFence(send(newCall(interface, method), true));
}

quint32 WireClient::send(DBusMessage *call, bool wantsReply)
{
    dbus_message_set_no_reply(call, wantsReply ? FALSE : TRUE);
    quint32 serial = 0;
    dbus_connection_send(m_connection, call, &serial);
    dbus_message_unref(call);
    return serial;
}

// The bus keeps the order of the subject's answers: what is not here before that of a later call
// never comes.
QStringList WireClient::answersUntilFence(quint32 serial)
{
    const quint32 fence =
        send(newCall(SubjectProcess::operations(), QStringLiteral("echo"), QStringLiteral("fence")),
             true);
    QStringList found;
    bool isFenceSeen = false;
    while (!isFenceSeen && dbus_connection_read_write(m_connection, StepMs)) {
        while (DBusMessage *message = dbus_connection_pop_message(m_connection)) {
            if (dbus_message_get_reply_serial(message) == serial)
                found.append(describe(message));
            isFenceSeen = isFenceSeen || dbus_message_get_reply_serial(message) == fence;
            dbus_message_unref(message);
        }
    }
    return isFenceSeen ? found : QStringList{QStringLiteral("the fence is lost")};
}
