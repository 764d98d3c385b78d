#pragma once

#include "cli/Command.h"
#include "cli/Session.h"

namespace cli {

/// The options that every command has.
QList<Parameter> commonOptions();

/// Options that exclude each other.
QList<QStringList> exclusiveOptions();

/// What --color says.
output::ColourChoice colourFrom(const Arguments &arguments);

/// What the others say.
Options optionsFrom(const Arguments &arguments);

} // namespace cli
