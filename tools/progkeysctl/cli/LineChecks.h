#pragma once

#include "cli/Parser.h"

namespace cli {

/// Throws a Failure of status Usage if the line does not name a command, has words that belong to
/// nothing, lacks a required value, or has an invalid one.
void requireValid(const ParsedLine &line, const QList<Command> &commands);

} // namespace cli
