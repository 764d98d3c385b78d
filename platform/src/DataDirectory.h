#pragma once

#include <QString>

namespace zel {

/// The directory with a module's data.
class DataDirectory
{
public:
    explicit DataDirectory(QString path);

    const QString &path() const { return m_path; }

    /// Whether it contains a non-empty file, or cannot be read.
    bool holdsData() const;

    /// Whether a file of 64 KiB can be written there and synced to the disk.
    bool isWritable() const;

    /// Copies it to `<directory>.before-deploy`, or to the first of `.before-deploy.1`, ... that
    /// does not exist, and syncs the copy to the disk. Copies the targets of links. If the newest
    /// copy has the same content, it makes no other copy. Returns the path of the copy, or an empty
    /// text on failure. A failure leaves no incomplete copy.
    QString copyAside() const;

    /// Renames it to `<directory>.unusable`, or to the first of `.unusable.1`, ... that does not
    /// exist. Returns the new path, or an empty text on failure.
    QString setAside() const;

private:
    QString m_path;
};

} // namespace zel
