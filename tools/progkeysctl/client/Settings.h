#pragma once

#include "client/Bus.h"

#include <optional>

namespace client {

/// A setting's text, read from the SettingsManager of the phone; nothing if it does not answer or
/// has no such setting. That is how the service reads it, too.
std::optional<QString> readSetting(const Bus &bus, const QString &name);

} // namespace client
