#pragma once

#include <QString>

/// Notifications to the service manager, see sd_notify(3). They do nothing if NOTIFY_SOCKET is not
/// set. The first of several failures in a row is logged as a warning. They wait while the socket
/// is full.
namespace zel {

/// The process is up; `status` is a short text for people.
void tellReady(const QString &status);

/// The process has begun to end.
void tellStopping();

/// The process is alive; a watchdog expects this at regular intervals.
void tellAlive();

} // namespace zel
