#pragma once

#include <QString>

#include <optional>

/// A directory with one file for each setting. The name of the file is the name of the setting, and
/// its text is the value. One newline at the end of the file is not part of the value.
class SettingsDirectory
{
public:
    explicit SettingsDirectory(QString path);

    /// Whether a setting can have this name. Names of hidden files and of files in other
    /// directories are invalid.
    static bool isName(const QString &name);

    /// The current value, or nothing if there is no such setting.
    std::optional<QString> read(const QString &name) const;

    /// Writes the file atomically, and creates it if necessary. Returns false if the name is
    /// invalid or if writing failed.
    bool write(const QString &name, const QString &value) const;

private:
    QString pathOf(const QString &name) const;

    QString m_path;
};
