#include "SettingsDirectory.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <utility>

SettingsDirectory::SettingsDirectory(QString path) : m_path(std::move(path)) {}

std::optional<QString> SettingsDirectory::read(const QString &name) const
{
    const auto path = pathOf(name);
    if (!path)
        return std::nullopt;
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray text = file.readAll();
    if (text.endsWith('\n'))
        text.chop(1);
    return QString::fromUtf8(text);
}

bool SettingsDirectory::write(const QString &name, const QString &value) const
{
    const auto path = pathOf(name);
    if (!path)
        return false;
    QSaveFile file(*path);
    const QByteArray text = value.toUtf8() + '\n';
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
}

// A name must not lead out of the directory, nor to a hidden file in it.
std::optional<QString> SettingsDirectory::pathOf(const QString &name) const
{
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')) || name.contains(QLatin1Char('/')))
        return std::nullopt;
    return QDir(m_path).filePath(name);
}
