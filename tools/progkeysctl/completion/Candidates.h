#pragma once

#include "completion/ShellLine.h"
#include "completion/Values.h"

namespace completion {

/// What may stand at the end of a half-typed line of the shell, whose first word is the program;
/// whole words, which begin with what is typed there. The phone is asked on the bus that the line
/// names.
Answer candidates(const CLI::App &program, const ShellLine &line);

} // namespace completion
