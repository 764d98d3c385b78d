#include "InstanceLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace zel {
namespace {

bool isSameDirectory(int one, int other)
{
    struct stat oneStatus = {};
    struct stat otherStatus = {};
    return ::fstat(one, &oneStatus) == 0 && ::fstat(other, &otherStatus) == 0 &&
           oneStatus.st_dev == otherStatus.st_dev && oneStatus.st_ino == otherStatus.st_ino;
}

} // namespace

InstanceLock::~InstanceLock()
{
    release();
}

bool InstanceLock::acquire(const QString &directory)
{
    InstanceLock next;
    next.m_descriptor =
        ::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (next.m_descriptor < 0 || isSameDirectory(next.m_descriptor, m_descriptor))
        return true;
    if (::flock(next.m_descriptor, LOCK_EX | LOCK_NB) != 0)
        return errno != EWOULDBLOCK;
    std::swap(m_descriptor, next.m_descriptor);
    return true;
}

void InstanceLock::release()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace zel
