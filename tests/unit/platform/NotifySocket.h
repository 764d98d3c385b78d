#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The service manager's end of the protocol of sd_notify: while it lives, NOTIFY_SOCKET names it.
class NotifySocket
{
public:
    NotifySocket();
    ~NotifySocket();
    NotifySocket(const NotifySocket &) = delete;
    NotifySocket &operator=(const NotifySocket &) = delete;

    /// The messages that have come since the last call.
    QStringList take();

private:
    QTemporaryDir m_directory;
    int m_socket;
};
