#pragma once

#include <CLI/CLI.hpp>

#include <QJsonObject>

namespace completion {

/// Everything that help tells about the commands, as an object: the options of all commands, the
/// groups, and each command with its words, description, options and positional arguments.
QJsonObject commandList(const CLI::App &program);

} // namespace completion
