#pragma once

#include "defaults/Setting.h"

#include <map>

namespace defaults {

/// The settings that a rollout consists of; a missing one has no entry.
struct Rollout
{
    std::map<Kind, Setting> settings;
    QString directory;             ///< empty if there is none
    std::optional<int> givenLimit; ///< used instead of ProgKeysMax

    const Setting *find(Kind kind) const;

    /// The maximum number of keys of the set; nothing if it is unknown.
    std::optional<int> limit() const;

    /// Reads a setting from a file, `-` for stdin. Throws a Failure of status Usage if the rollout
    /// already has that setting.
    void add(Kind kind, const QString &file);

    /// Reads the setting from the file of its name in a directory, if the file is there and the
    /// rollout does not have the setting. Returns whether the file is there.
    bool addFrom(const QString &folder, Kind kind);

    /// Reads files, and then the other settings from at most one directory. A kind is that of the
    /// file's name, or else the given one; `advice` is how to specify it. Throws a Failure of
    /// status Usage if there is no kind, and of status Failed if the directory has no setting.
    void addPaths(const QStringList &paths, std::optional<Kind> kind, const QString &advice);
};

} // namespace defaults
