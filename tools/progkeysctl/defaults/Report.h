#pragma once

#include "defaults/Rollout.h"
#include "output/Output.h"

namespace defaults {

/// Prints all problems as rows: file, record, field and fieldName (null for a whole record),
/// column, severity, code, message; character counts in the whole text.
///
/// For people and editors: `FILE:RECORD:FIELD:COLUMN: error: ...`, then the text with the place
/// marked, or the fields of a record that has too many or too few. Of many problems the first 50
/// are shown. Then a summary: "2 errors, 1 warning in 2 files".
void print(const Rollout &rollout, output::Output &out);

int countOf(const Rollout &rollout, Severity severity);

} // namespace defaults
