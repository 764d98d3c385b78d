#pragma once

#include "zelcore/ZELEvent.h"

#include <QDBusMessage>

#include <optional>

/// Platform events as signals on the bus, for programs that are not modules. The signature is
/// `sa(svb)`: the event's name and its arguments in order, each as (name, value, flag).
namespace zel {

/// The signal for the event, sent from the object at `path`. Nothing if the bus does not know the
/// type of an argument.
std::optional<QDBusMessage> encodeEvent(const QString &path, const ZELEvent &event);

/// The event in a signal. Nothing if the signal has another signature.
std::optional<ZELEvent> decodeEvent(const QDBusMessage &message);

} // namespace zel
