#pragma once

#include <QString>

#include <optional>

/// Settings as files: one a setting, its name the file's name, its whole text the value. One
/// newline at the end of the file is not part of the value.
class SettingsDirectory
{
public:
    explicit SettingsDirectory(QString path);

    /// Can a setting have this name? Not if it would lead out of the directory or to a hidden file.
    static bool isName(const QString &name);

    /// The value as the file holds it now; nothing if there is no such setting.
    std::optional<QString> read(const QString &name) const;

    /// Writes the file, whole or not at all; the setting need not be there yet. False if it is no
    /// name or writing failed.
    bool write(const QString &name, const QString &value) const;

private:
    QString pathOf(const QString &name) const;

    QString m_path;
};
