#include "NotifySocket.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <array>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

NotifySocket::NotifySocket() : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    const QByteArray path = QFile::encodeName(m_directory.filePath(QStringLiteral("notify")));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::copy(path.cbegin(), path.cend(), address.sun_path);
    const auto *const bound = reinterpret_cast<const sockaddr *>(&address);
    if (::bind(m_socket, bound, sizeof address) != 0)
        qFatal("Cannot bind the socket of the service manager");
    qputenv("NOTIFY_SOCKET", path);
}

NotifySocket::~NotifySocket()
{
    qunsetenv("NOTIFY_SOCKET");
    ::close(m_socket);
}

QStringList NotifySocket::take()
{
    QStringList messages;
    std::array<char, 4096> text = {};
    for (;;) {
        const ssize_t length = ::recv(m_socket, text.data(), text.size(), MSG_DONTWAIT);
        if (length < 0)
            return messages;
        messages.append(QString::fromUtf8(text.data(), static_cast<int>(length)));
    }
}
