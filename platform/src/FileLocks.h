#pragma once

#include <QString>

#include <optional>
#include <sys/types.h>

namespace zel {

/// Whether to close files after checking their locks. Closing a file releases all locks that this
/// process holds on it. Therefore close the files only before the module opens its data. Otherwise
/// keep them open until the process ends.
enum class Afterwards { Close, KeepOpen };

/// Another process that has an exclusive POSIX lock on a file below the directory. Its id is not
/// positive if the kernel does not know it. Nothing if there is no such process, or if the locks
/// cannot be checked.
std::optional<pid_t> exclusiveLockHolder(const QString &directory, Afterwards afterwards);

} // namespace zel
