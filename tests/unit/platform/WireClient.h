#pragma once

#include <QString>
#include <QStringList>

struct DBusConnection;
struct DBusMessage;

/// A client that sees every message that answers a call, where an ordinary library would keep the
/// first and drop the rest.
class WireClient
{
public:
    WireClient();
    ~WireClient();
    WireClient(const WireClient &) = delete;
    WireClient &operator=(const WireClient &) = delete;

    /// Calls a method with one text and returns all answers: "reply", or "error name: message".
    QStringList answers(const QString &interface, const QString &method, const QString &text,
                        bool wantsReply = true);

    /// The same, without an argument.
    QStringList answers(const QString &interface, const QString &method);

private:
    quint32 send(DBusMessage *call, bool wantsReply);
    QStringList answersUntilFence(quint32 serial);

    DBusConnection *m_connection;
};
