#include "sandbox/Directory.h"

#include "outcome/Failure.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

namespace sandbox {
namespace {

Failure cannotMake(const QString &path)
{
    return {ExitStatus::Failed, QStringLiteral("Cannot make %1").arg(path),
            QStringLiteral("See whether there is room and leave to write.")};
}

// The path of the bus's socket has room for 107 bytes.
QString directoryTemplate()
{
    constexpr int LongestParent = 80;
    const QString parent = QDir::tempPath();
    const bool isShort = QFile::encodeName(parent).size() <= LongestParent;
    return (isShort ? parent : QStringLiteral("/tmp")) + QStringLiteral("/progkeys-XXXXXX");
}

} // namespace

Directory::Directory(const Places &places)
    : m_directory(directoryTemplate()), m_keepsLogs(!places.logs.isEmpty())
{
    if (!m_directory.isValid())
        throw cannotMake(QStringLiteral("a directory in %1").arg(QDir::tempPath()));
    provide(QStringLiteral("settings"), places.settings);
    provide(QStringLiteral("data"), places.data);
    provide(QStringLiteral("logs"), places.logs);
    requireWritable(QStringLiteral("data"));
    requireWritable(QStringLiteral("logs"));
    if (!places.settings.isEmpty())
        return;
    write(QStringLiteral("settings/DefaultActions"), "\n");
    write(QStringLiteral("settings/DefaultKeys"), "\n");
    write(QStringLiteral("settings/ProgKeysMax"), "100\n");
}

void Directory::provide(const QString &name, const QString &place) const
{
    const QString target = place.isEmpty() ? file(name) : QDir(place).absolutePath();
    if (!QDir().mkpath(target))
        throw cannotMake(target);
    if (target != file(name) && !QFile::link(target, file(name)))
        throw cannotMake(file(name));
}

// The service runs without its data, too, and would keep nothing.
void Directory::requireWritable(const QString &name) const
{
    QTemporaryFile trial(file(name) + QStringLiteral("/.trial-XXXXXX"));
    if (!trial.open())
        throw Failure{ExitStatus::Failed, QStringLiteral("Cannot write in %1").arg(whereIs(name)),
                      QStringLiteral("See whether there is room and leave to write.")};
}

QString Directory::file(const QString &name) const
{
    return m_directory.filePath(name);
}

QString Directory::log(const QString &program) const
{
    return file(QStringLiteral("logs/%1.log").arg(program));
}

QString Directory::whereIs(const QString &name) const
{
    return QFileInfo(file(name)).canonicalFilePath();
}

void Directory::write(const QString &name, const QByteArray &text) const
{
    QFile target(file(name));
    if (!target.open(QIODevice::WriteOnly) || target.write(text) != text.size() || !target.flush())
        throw cannotMake(target.fileName());
}

} // namespace sandbox
