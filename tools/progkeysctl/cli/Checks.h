#pragma once

#include <CLI/CLI.hpp>

namespace cli {

/// Passes a whole number in decimal digits. The parser alone takes 010 for 8, nothing for 0, and
/// what 64 bits do not hold for the number nearest to it. To be given to `transform()`.
CLI::Validator wholeNumber();

/// Refuses an empty text, which is what a variable that nobody set leaves on the line.
CLI::Validator notEmpty();

} // namespace cli
