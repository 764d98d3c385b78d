#pragma once

#include "sandbox/Directory.h"
#include "sandbox/Program.h"

namespace sandbox {

/// The user's shell; where that is one whose prompt can be told apart, it is. Throws a Failure if
/// the directory cannot be written.
Program userShell(const Directory &directory, const QString &path);

} // namespace sandbox
