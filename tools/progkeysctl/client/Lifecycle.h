#pragma once

#include "client/Bus.h"

namespace client {

/// Runs a lifecycle hook of the service, such as `restoreDefault`, by its method's name. Throws a
/// Failure if it was not answered. What the hook returned is not told: it says nothing about what
/// became of the data.
void runHook(const Bus &bus, const QString &method);

} // namespace client
