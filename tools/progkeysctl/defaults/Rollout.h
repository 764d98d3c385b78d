#pragma once

#include "defaults/Setting.h"

#include <map>

namespace defaults {

/// The settings that a rollout consists of; a missing one has no entry.
struct Rollout
{
    std::map<Kind, Setting> settings;
    QString directory; ///< empty if there is none

    const Setting *find(Kind kind) const;
};

/// Where the settings of a rollout are.
struct RolloutSources
{
    QStringList paths;             ///< files, `-` for stdin, and at most one directory
    std::optional<Kind> kind;      ///< of files whose names do not imply it
    std::map<Kind, QString> files; ///< files of a known kind, `-` for stdin
    QString unknownKindAdvice;     ///< how to specify the kind of a file
};

/// Reads a rollout: the files and, for other settings, the files in the directory that have the
/// names of the settings.
///
/// Throws a Failure of status Usage if the kind of a file is unknown, or if two files are the same
/// setting; of status Failed if a file cannot be read or the directory contains no setting.
Rollout readRollout(const RolloutSources &sources);

/// Adds ProgKeysMax from the directory of the keys, if it is there and the rollout has none.
void addLimitBesideKeys(Rollout &rollout);

} // namespace defaults
