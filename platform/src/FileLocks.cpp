#include "FileLocks.h"

#include <QByteArray>
#include <QDirIterator>
#include <QFile>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zel {
namespace {

std::vector<QByteArray> filesBelow(const QString &directory)
{
    std::vector<QByteArray> names;
    QDirIterator files(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext())
        names.push_back(QFile::encodeName(files.next()));
    return names;
}

// Whoever keeps this process from reading the file.
std::optional<pid_t> holderOf(const char *file)
{
    const int descriptor = ::open(file, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    const bool isHeld = ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    ::close(descriptor);
    return isHeld ? std::make_optional(lock.l_pid) : std::nullopt;
}

// Nothing but system calls: the child of a process that has more than one thread.
[[noreturn]] void reportHolder(const std::vector<QByteArray> &files, int channel)
{
    for (const QByteArray &file : files) {
        const std::optional<pid_t> holder = holderOf(file.constData());
        if (holder && *holder != ::getppid())
            ::_exit(::write(channel, &*holder, sizeof *holder) == sizeof *holder ? 0 : 1);
    }
    ::_exit(0);
}

} // namespace

// Asked by a child: closing a file drops all locks that the process itself holds on it, and the
// module may have its database open by now.
std::optional<pid_t> exclusiveLockHolder(const QString &directory)
{
    const std::vector<QByteArray> files = filesBelow(directory);
    int channel[2];
    if (::pipe2(channel, O_CLOEXEC) != 0)
        return std::nullopt;
    const pid_t child = ::fork();
    if (child == 0)
        reportHolder(files, channel[1]);
    ::close(channel[1]);
    pid_t holder = 0;
    const bool isHeld = child > 0 && ::read(channel[0], &holder, sizeof holder) == sizeof holder;
    ::close(channel[0]);
    if (child > 0)
        ::waitpid(child, nullptr, 0);
    return isHeld ? std::make_optional(holder) : std::nullopt;
}

} // namespace zel
