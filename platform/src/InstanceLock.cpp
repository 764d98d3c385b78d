#include "InstanceLock.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace zel {

InstanceLock::~InstanceLock()
{
    release();
}

bool InstanceLock::acquire(const QString &name)
{
    // An address that begins with a zero byte is in the abstract name space.
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray text = name.toUtf8().left(static_cast<int>(sizeof address.sun_path) - 1);
    std::copy(text.cbegin(), text.cend(), address.sun_path + 1);
    const size_t length = offsetof(sockaddr_un, sun_path) + 1 + static_cast<size_t>(text.size());

    m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const auto *const bound = reinterpret_cast<const sockaddr *>(&address);
    return ::bind(m_socket, bound, static_cast<socklen_t>(length)) == 0 || errno != EADDRINUSE;
}

void InstanceLock::release()
{
    if (m_socket >= 0)
        ::close(m_socket);
    m_socket = -1;
}

} // namespace zel
