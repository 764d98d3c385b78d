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

    /// Copies it to `<directory>.before-deploy`, or the first of `.before-deploy.1`, ... that is
    /// free, and waits until the copy is on the disk. Returns the copy's path, or an empty text
    /// if it could not be made; a part of a copy is removed again.
    QString copyAside() const;

    /// Renames it to `<directory>.unusable`, or the first of `.unusable.1`, ... that is free, and
    /// waits until that is on the disk. Returns the new path, or an empty text if it could not be
    /// renamed.
    QString setAside() const;

private:
    QString freeName(const QString &suffix) const;

    QString m_path;
};

} // namespace zel
