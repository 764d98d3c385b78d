#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "records/Key.h"

/// Options that select keys.
namespace commands {

/// `--container` and `--module`.
QList<cli::Parameter> placeOptions();

/// Whether the key is selected by all of these options, `--type` and `--action` that are given.
bool isSelected(const Key &key, const cli::Arguments &arguments);

} // namespace commands
