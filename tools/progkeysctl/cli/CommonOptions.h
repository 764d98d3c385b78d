#pragma once

#include "cli/Command.h"
#include "cli/Session.h"

namespace cli {

/// The options that every command has.
QList<Parameter> commonOptions();

/// Options that exclude each other.
QList<QStringList> exclusiveOptions();

/// The value of --color.
output::ColourChoice colourFrom(const Arguments &arguments);

/// The values of the others.
Options optionsFrom(const Arguments &arguments);

} // namespace cli
