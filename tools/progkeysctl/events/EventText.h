#pragma once

#include "events/EventListener.h"

#include <QJsonObject>

namespace events {

/// The event as an object: its name, its sender, and its arguments in order, each with name and
/// value.
QJsonObject toJson(const ReceivedEvent &received);

/// The arguments of such an object on one line: `idKey={idKey=3 container="home" ...}`. Records are
/// printed without their empty texts.
QString argumentsText(const QJsonObject &object);

} // namespace events
