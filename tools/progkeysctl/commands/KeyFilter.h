#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "records/Key.h"

#include <optional>

namespace commands {

/// Which keys a command is about; what is not given admits all.
struct KeyFilter
{
    std::optional<QString> container;
    std::optional<int> module; ///< address of the add-on module
    std::optional<int> type;

    bool admits(const Key &key) const;
    bool admitsAll() const { return !container && !module && !type; }
};

/// `--container` and `--module`.
QList<cli::Parameter> placeOptions();

/// What they say, and `--type` where the command has it.
KeyFilter keyFilterFrom(const cli::Arguments &arguments);

} // namespace commands
