#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "records/Key.h"

#include <optional>

namespace commands {

/// Selects keys. A condition that is not set admits all.
struct KeyFilter
{
    std::optional<QString> container;
    std::optional<int> module; ///< address of the add-on module
    std::optional<int> type;
    std::optional<qlonglong> action;

    bool admits(const Key &key) const;
    bool admitsAll() const { return !container && !module && !type && !action; }
};

/// `--container` and `--module`.
QList<cli::Parameter> placeOptions();

/// These, `--type` and `--action`.
QList<cli::Parameter> keyFilterOptions();

/// The conditions that the options set.
KeyFilter keyFilterFrom(const cli::Arguments &arguments);

} // namespace commands
