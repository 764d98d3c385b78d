#pragma once

#include "defaults/Setting.h"

#include <QStringList>

#include <optional>

namespace defaults {

/// Which files are to be checked, and what they do not say themselves.
struct CheckRequest
{
    QStringList files;        ///< `-` is stdin
    std::optional<Kind> kind; ///< of files whose name does not tell
    std::optional<int> limit; ///< keys of the set; else what `ProgKeysMax` says, if it is there
};

/// The settings that were looked at, with what was found in them.
struct CheckResult
{
    QList<Setting> settings; ///< in the order of the files; `ProgKeysMax` after what it limits
    QStringList keysAlone;   ///< files of keys that no actions were given for
};

/// Reads and checks the files. Keys are held against the actions of the same directory if they were
/// given, else against all actions given; likewise the limit, which is also taken from the
/// directory if it was not given.
///
/// Throws a Failure: of status Usage if the kind of a file is not known, of status Failed if one
/// cannot be read.
CheckResult checkFiles(const CheckRequest &request);

} // namespace defaults
