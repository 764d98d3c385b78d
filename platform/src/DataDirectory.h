#pragma once

#include <QString>

namespace zel {

/// A module's own directory of data.
class DataDirectory
{
public:
    explicit DataDirectory(QString path);

    const QString &path() const { return m_path; }

    /// Is there any file in it that is not empty?
    bool holdsData() const;

    /// Can a file be made in it, of some size, and reach the disk?
    bool isWritable() const;

    /// Copies it to `<directory>.before-deploy`, or the first of `.before-deploy.1`, ... that is
    /// free, and waits until the copy is on the disk; what links point at is copied, too. If the
    /// newest copy is the same already, there is no further one. Returns the copy's path, or an
    /// empty text if it could not be made; a part of a copy is removed again.
    QString copyAside() const;

    /// Renames it to `<directory>.unusable`, or the first of `.unusable.1`, ... that is free, and
    /// waits until that is on the disk. Returns the new path, or an empty text if it could not be
    /// renamed.
    QString setAside() const;

private:
    bool isSameAs(const QString &copy) const;

    QString m_path;
};

} // namespace zel
