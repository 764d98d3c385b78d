#pragma once

#include <QFile>
#include <QString>

#include <fcntl.h>
#include <unistd.h>

namespace unit {

/// A lock that this process holds on a file, for other processes to run into, while the object
/// lives.
class LockedFile
{
public:
    /// `kind` is F_RDLCK, which lets others read, or F_WRLCK, which does not.
    LockedFile(const QString &path, short kind)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC))
    {
        struct flock lock = {};
        lock.l_type = kind;
        m_isHeld = ::fcntl(m_descriptor, F_SETLK, &lock) == 0;
    }
    ~LockedFile() { ::close(m_descriptor); }
    LockedFile(const LockedFile &) = delete;
    LockedFile &operator=(const LockedFile &) = delete;

    bool isHeld() const { return m_isHeld; }

private:
    int m_descriptor;
    bool m_isHeld = false;
};

} // namespace unit
