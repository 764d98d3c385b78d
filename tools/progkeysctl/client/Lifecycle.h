#pragma once

#include "client/Bus.h"

namespace client {

/// Runs a lifecycle hook of the service, such as `restoreDefault`. Throws a Failure for an error.
/// The result of the hook is ignored, because it does not depend on the data.
void runHook(const Bus &bus, const QString &method);

} // namespace client
