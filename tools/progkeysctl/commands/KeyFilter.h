#pragma once

#include "records/Key.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace commands {

/// Which keys a command is about; what is not said admits all.
struct KeyFilter
{
    std::optional<std::string> container;
    std::optional<int> module; ///< address of the add-on module
    std::optional<int> type;

    bool admits(const Key &key) const;
    bool admitsAll() const { return !container && !module && !type; }
};

/// `--container` and `--module`.
void addPlaceOptions(CLI::App *command, KeyFilter &filter);

} // namespace commands
