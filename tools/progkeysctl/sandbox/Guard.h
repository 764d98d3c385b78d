#pragma once

#include "sandbox/Signals.h"

#include <functional>

namespace sandbox {

/// Does the work in a child, and returns what it returned, with nothing of it left running: this
/// process and the child watch each other, so that either ends everything if the other is killed.
/// In the child this throws what the work throws. There must be only one thread.
int guarded(const std::function<int(const Signals &)> &work);

} // namespace sandbox
