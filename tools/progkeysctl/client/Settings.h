#pragma once

#include "client/Bus.h"

#include <optional>

namespace client {

/// The text of a setting, read from the SettingsManager of the phone. Like in the service, it is
/// missing if the SettingsManager does not answer or has no such setting.
std::optional<QString> readSetting(const Bus &bus, const QString &name);

} // namespace client
