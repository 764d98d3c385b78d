#pragma once

#include <QByteArray>

#include <sys/stat.h>
#include <unistd.h>

namespace zel {

/// Whether stderr is the journal stream. The first call determines this. systemd identifies the
/// stream by device and inode, because a program can redirect stderr.
inline bool isStderrTheJournal()
{
    static const bool isTheJournal = [] {
        struct stat status = {};
        if (::fstat(STDERR_FILENO, &status) != 0)
            return false;
        const QByteArray stream = QByteArray::number(qulonglong{status.st_dev}) + ':' +
                                  QByteArray::number(qulonglong{status.st_ino});
        return qgetenv("JOURNAL_STREAM") == stream;
    }();
    return isTheJournal;
}

} // namespace zel
