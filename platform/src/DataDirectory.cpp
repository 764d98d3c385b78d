#include "DataDirectory.h"

#include "zelcore/ZELLogger.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryFile>

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

bool succeeds(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

// Removes a link, not its target.
bool discard(const QString &path)
{
    return QFileInfo(path).isSymLink() ? QFile::remove(path) : QDir(path).removeRecursively();
}

struct Names
{
    QString last; // empty if no name exists
    QString free;
};

// The last existing name and the first unused name of `first`, `first.1`, `first.2`, ...
Names namesAfter(const QString &first)
{
    Names names{QString(), first};
    for (int number = 1; QFileInfo::exists(names.free) || QFileInfo(names.free).isSymLink();
         ++number) {
        names.last = names.free;
        names.free = first + QLatin1Char('.') + QString::number(number);
    }
    return names;
}

} // namespace

DataDirectory::DataDirectory(QString path) : m_path(std::move(path)) {}

bool DataDirectory::holdsData() const
{
    const QFileInfo directory(m_path);
    if (directory.exists() && !directory.isReadable())
        return true;
    QDirIterator files(m_path, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        if (files.fileInfo().size() > 0)
            return true;
    }
    return false;
}

bool DataDirectory::isWritable() const
{
    constexpr int size = 64 * 1024;
    QTemporaryFile probe(m_path + QStringLiteral("/probe"));
    return probe.open() && probe.write(QByteArray(size, ' ')) == size && probe.flush() &&
           ::fsync(probe.handle()) == 0;
}

// Another process makes the copy, because the module has its database open. If this process closed
// the same file, it would lose all its locks on it.
QString DataDirectory::copyAside() const
{
    const Names names = namesAfter(m_path + QStringLiteral(".before-deploy"));
    const QStringList comparison{QStringLiteral("-rq"), m_path, names.last};
    if (!names.last.isEmpty() && succeeds(QStringLiteral("diff"), comparison))
        return names.last;
    // The copy gets its name when it is complete, because the process may be killed meanwhile.
    const QString part = m_path + QStringLiteral(".copying");
    discard(part);
    const bool isCopied = succeeds(QStringLiteral("cp"), {QStringLiteral("-aL"), m_path, part});
    if (isCopied && syncFileSystemOf(part) && QDir().rename(part, names.free) &&
        syncFileSystemOf(names.free))
        return names.free;
    if (!discard(part))
        logger().warning(QStringLiteral("A part of a copy is left behind in %1").arg(part));
    return {};
}

QString DataDirectory::setAside() const
{
    QString name = namesAfter(m_path + QStringLiteral(".unusable")).free;
    if (!QDir().rename(m_path, name))
        return {};
    // If a power cut undoes the renaming, the next start repeats it.
    static_cast<void>(syncFileSystemOf(name));
    return name;
}

} // namespace zel
