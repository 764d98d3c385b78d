#pragma once

#include <QString>

/// Notifications to the service manager, see sd_notify(3). They have no effect if NOTIFY_SOCKET is
/// not set. They block while the socket is full. After consecutive failures, only the first one is
/// logged, as a warning.
namespace zel {

/// The process has started. `status` is a short text for users.
void tellReady(const QString &status);

/// The process is ending.
void tellStopping();

/// The process is alive. A watchdog expects this at regular intervals.
void tellAlive();

} // namespace zel
