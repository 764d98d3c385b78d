#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace sandbox {

/// Directories of the user that are to be used in place of temporary ones; empty for none.
struct Places
{
    QString settings;
    QString data;
    QString logs;
};

/// The directory of a sandbox, which is removed with this. What stands in a directory of the user
/// is behind a link in it, and stays.
class Directory
{
public:
    /// Makes what is missing. Throws a Failure if that cannot be, or if the data or the logs
    /// cannot be written.
    explicit Directory(const Places &places);

    QString path() const { return m_directory.path(); }
    QString file(const QString &name) const;
    QString settings() const { return file(QStringLiteral("settings")); }
    QString data() const { return file(QStringLiteral("data")); }
    QString log(const QString &program) const;

    /// The path of an entry, the link behind it followed.
    QString whereIs(const QString &name) const;

    /// Whether the logs stay.
    bool keepsLogs() const { return m_keepsLogs; }

    /// Throws a Failure if it cannot be written.
    void write(const QString &name, const QByteArray &text) const;

private:
    void provide(const QString &name, const QString &place) const;
    void requireWritable(const QString &name) const;

    QTemporaryDir m_directory;
    bool m_keepsLogs;
};

} // namespace sandbox
