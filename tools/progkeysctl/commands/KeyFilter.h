#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "records/Key.h"

/// Options that select keys.
namespace commands {

/// `--container` and `--module`.
QList<cli::Parameter> placeOptions();

/// These, `--type` and `--action`.
QList<cli::Parameter> keyFilterOptions();

/// Whether all of the options that are given select the key.
bool isSelected(const Key &key, const cli::Arguments &arguments);

} // namespace commands
