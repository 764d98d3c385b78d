#pragma once

#include <QJsonValue>
#include <QVariant>

namespace events {

/// A value from the bus in JSON: a key or an action as an object of its fields, another structure
/// or list as an array, a dictionary as an object.
QJsonValue toJson(const QVariant &value);

} // namespace events
