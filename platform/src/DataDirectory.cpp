#include "DataDirectory.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <filesystem>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace zel {
namespace {

fs::path toPath(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

bool syncFileSystemOf(const fs::path &path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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
    QDirIterator files(m_path, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        if (files.fileInfo().size() > 0)
            return true;
    }
    return false;
}

QString DataDirectory::copyAside() const
{
    QString copy = freeName();
    std::error_code error;
    fs::copy(toPath(m_path), toPath(copy), fs::copy_options::recursive, error);
    if (!error && syncFileSystemOf(toPath(copy)))
        return copy;
    fs::remove_all(toPath(copy), error);
    return {};
}

QString DataDirectory::freeName() const
{
    const QString first = m_path + QStringLiteral(".before-deploy");
    QString name = first;
    for (int number = 1; QFileInfo::exists(name); ++number)
        name = first + QLatin1Char('.') + QString::number(number);
    return name;
}

} // namespace zel
