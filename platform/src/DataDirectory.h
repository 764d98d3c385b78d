#pragma once

#include <QString>

namespace zel {

/// The directory with a module's data.
class DataDirectory
{
public:
    explicit DataDirectory(QString path);

    const QString &path() const { return m_path; }

    /// Whether it contains a file that is not empty, or cannot be read.
    bool holdsData() const;

    /// Whether a file of 64 KiB can be written in it and synced to the disk.
    bool isWritable() const;

    /// Copies it to `<directory>.before-deploy`, or the first of `.before-deploy.1`, ... that does
    /// not exist, and syncs the copy to the disk. Copies the targets of links. If the newest copy
    /// has the same content, no further copy is made. Returns the copy's path, or an empty text on
    /// failure, which leaves no part of a copy behind.
    QString copyAside() const;

    /// Renames it to `<directory>.unusable`, or the first of `.unusable.1`, ... that does not
    /// exist. Returns the new path, or an empty text on failure.
    QString setAside() const;

private:
    QString m_path;
};

} // namespace zel
