#pragma once

#include "zelcore/ZELEvent.h"

#include <QDBusMessage>

#include <optional>

/// Platform events as bus signals, for programs that are no module: `sa(svb)`, the event's name and
/// then its arguments in order, each as (name, value, flag).
namespace zel {

/// The signal that carries the event, sent from the object at `path`; nothing if an argument is of
/// a type that the bus does not know.
std::optional<QDBusMessage> encodeEvent(const QString &path, const ZELEvent &event);

/// The event that a signal carries; nothing if its signature is another one.
std::optional<ZELEvent> decodeEvent(const QDBusMessage &message);

} // namespace zel
