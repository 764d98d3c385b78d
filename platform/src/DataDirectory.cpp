#include "DataDirectory.h"

#include "zelcore/ZELLogger.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace zel {
namespace {

bool syncFileSystemOf(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

} // namespace

DataDirectory::DataDirectory(QString path) : m_path(std::move(path)) {}

bool DataDirectory::holdsData() const
{
    const QFileInfo directory(m_path);
    if (directory.exists() && !directory.isReadable())
        return true; // nobody can say that it does not
    QDirIterator files(m_path, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        if (files.fileInfo().size() > 0)
            return true;
    }
    return false;
}

// By another process: the module has its database open by now, and closing the same file here once
// more would drop the locks that all of this process holds on it.
QString DataDirectory::copyAside() const
{
    QString copy = freeName(QStringLiteral(".before-deploy"));
    const int status = QProcess::execute(
        QStringLiteral("cp"), {QStringLiteral("-a"), QStringLiteral("--"), m_path, copy});
    if (status == 0 && syncFileSystemOf(copy))
        return copy;
    if (!QDir(copy).removeRecursively())
        logger().warning(QStringLiteral("A part of a copy is left behind in %1").arg(copy));
    return {};
}

QString DataDirectory::setAside() const
{
    QString name = freeName(QStringLiteral(".unusable"));
    if (!QDir().rename(m_path, name))
        return {};
    // A renaming that a power cut undoes is made again at the next start.
    static_cast<void>(syncFileSystemOf(name));
    return name;
}

QString DataDirectory::freeName(const QString &suffix) const
{
    const QString first = m_path + suffix;
    QString name = first;
    for (int number = 1; QFileInfo::exists(name); ++number)
        name = first + QLatin1Char('.') + QString::number(number);
    return name;
}

} // namespace zel
