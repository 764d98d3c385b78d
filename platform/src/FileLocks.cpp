#include "FileLocks.h"

#include <QDirIterator>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace zel {
namespace {

// F_GETLK does not report the locks of this process.
std::optional<pid_t> holderOf(const QString &file, Afterwards afterwards)
{
    const int descriptor = ::open(QFile::encodeName(file).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    struct flock lock = {};
    lock.l_type = F_RDLCK;
    const bool isHeld = ::fcntl(descriptor, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
    if (afterwards == Afterwards::Close)
        ::close(descriptor);
    return isHeld ? std::make_optional(lock.l_pid) : std::nullopt;
}

} // namespace

std::optional<pid_t> exclusiveLockHolder(const QString &directory, Afterwards afterwards)
{
    QDirIterator files(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        if (const auto holder = holderOf(files.next(), afterwards))
            return holder;
    }
    return std::nullopt;
}

} // namespace zel
