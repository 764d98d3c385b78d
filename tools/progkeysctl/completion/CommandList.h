#pragma once

#include "cli/Command.h"

#include <QJsonObject>

namespace completion {

/// Everything that help tells about the commands, as an object: the options of all commands, the
/// groups, and each command with its words, description, options and positional arguments.
QJsonObject commandList(const QList<cli::Command> &commands);

} // namespace completion
