#include "LogStream.h"

#include <QByteArray>

#include <sys/stat.h>
#include <unistd.h>

namespace zel {
namespace {

// systemd names the journal's own stream by device and inode, so that a process whose stderr was
// redirected elsewhere can tell.
bool isStderrNamedAsTheJournal()
{
    struct stat status = {};
    if (fstat(STDERR_FILENO, &status) != 0)
        return false;
    const QByteArray stream = QByteArray::number(qulonglong{status.st_dev}) + ':' +
                              QByteArray::number(qulonglong{status.st_ino});
    return qgetenv("JOURNAL_STREAM") == stream;
}

} // namespace

bool isStderrTheJournal()
{
    static const bool isTheJournal = isStderrNamedAsTheJournal();
    return isTheJournal;
}

} // namespace zel
