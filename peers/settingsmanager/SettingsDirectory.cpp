#include "SettingsDirectory.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <utility>

SettingsDirectory::SettingsDirectory(QString path) : m_path(std::move(path)) {}

std::optional<QString> SettingsDirectory::read(const QString &name) const
{
    QFile file(pathOf(name));
    if (!isName(name) || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray text = file.readAll();
    if (text.endsWith('\n'))
        text.chop(1);
    return QString::fromUtf8(text);
}

bool SettingsDirectory::write(const QString &name, const QString &value) const
{
    QSaveFile file(pathOf(name));
    const QByteArray text = value.toUtf8() + '\n';
    return isName(name) && file.open(QIODevice::WriteOnly) && file.write(text) == text.size() &&
           file.commit();
}

bool SettingsDirectory::isName(const QString &name)
{
    return !name.isEmpty() && !name.startsWith(QLatin1Char('.')) &&
           !name.contains(QLatin1Char('/'));
}

QString SettingsDirectory::pathOf(const QString &name) const
{
    return QDir(m_path).filePath(name);
}
