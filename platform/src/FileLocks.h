#pragma once

#include <QString>

#include <optional>
#include <sys/types.h>

namespace zel {

/// What happens to a file that was opened to ask about its locks. Closing it drops every lock that
/// this process holds on it. So close it only while the module has not opened its data yet;
/// otherwise keep it open until the process ends.
enum class Afterwards { Close, KeepOpen };

/// The other process that keeps everyone from reading a file below the directory, by an exclusive
/// lock of the kind that databases take. Its id is not positive if the kernel does not know it.
/// Nothing if there is no such process, or if it cannot be found.
std::optional<pid_t> exclusiveLockHolder(const QString &directory, Afterwards afterwards);

} // namespace zel
