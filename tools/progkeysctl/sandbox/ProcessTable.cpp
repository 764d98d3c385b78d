#include "sandbox/ProcessTable.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

namespace sandbox {
namespace {

// "pid (name) state parent ...", where the name may have anything in it.
pid_t parentOf(const QString &pid)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = file.readAll();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 1).simplified().split(' ');
    return fields.size() > 1 ? fields.at(1).toInt() : 0;
}

} // namespace

QList<pid_t> childrenOfThisProcess()
{
    QList<pid_t> children;
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &entry : entries) {
        bool isProcess = false;
        const pid_t pid = entry.toInt(&isProcess);
        if (isProcess && parentOf(entry) == getpid())
            children.append(pid);
    }
    return children;
}

} // namespace sandbox
