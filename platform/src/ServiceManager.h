#pragma once

#include <QString>

/// What the service manager is told that started the process, by the protocol of sd_notify. Where
/// NOTIFY_SOCKET names none, nothing happens; one that cannot be told is warned of, once until it
/// can be again. One that is there and not read is waited for, as with every datagram.
namespace zel {

/// The process is up; `status` is a short text for people.
void tellReady(const QString &status);

/// The process has begun to end.
void tellStopping();

/// The process gets on with its work; to be said again and again where a watchdog waits for it.
void tellAlive();

} // namespace zel
