#pragma once

#include <dbus/dbus.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSemaphore>
#include <QThread>

#include <functional>
#include <string>

namespace fuzz {

/// Another peer, on a thread of this process: what is sent to it goes through the bus library and
/// through Qt like a message from another process.
class PrivateLine : private QThread
{
public:
    /// Sets up what is to receive, on the peer's thread, and what goes when the peer goes.
    using SetUp = std::function<void(QDBusConnection connection, QObject *owner)>;

    explicit PrivateLine(SetUp setUp);

    /// Waits for the peer to end, so that nothing is on its way when leaks are looked for.
    ~PrivateLine() override;

    /// Sends the message and forgets it.
    void send(DBusMessage *message);

    /// Sends the call and returns what it is answered with, to be unreferenced.
    DBusMessage *call(DBusMessage *message);

private:
    void run() override;

    // Qt runs no event loop without it, on any thread.
    int m_argumentCount = 0;
    QCoreApplication m_application{m_argumentCount, nullptr};
    SetUp m_setUp;
    QSemaphore m_ready;
    std::string m_address;
    DBusConnection *m_connection = nullptr;
};

} // namespace fuzz
