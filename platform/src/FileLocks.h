#pragma once

#include <QString>

#include <optional>
#include <sys/types.h>

namespace zel {

/// The other process that keeps everybody else away from a file below the directory, by an
/// exclusive lock of the kind that databases take. Its id is not positive if the kernel cannot tell
/// it; nothing is returned if there is none, or if that cannot be found out.
std::optional<pid_t> exclusiveLockHolder(const QString &directory);

} // namespace zel
