#pragma once

#include <QList>

#include <sys/types.h>

namespace sandbox {

/// The children of this process, also those that it adopted.
QList<pid_t> childrenOfThisProcess();

} // namespace sandbox
