#pragma once

#include "defaults/Rollout.h"
#include "output/Listing.h"
#include "output/Terminal.h"

namespace defaults {

/// All problems as rows: file, record, field and fieldName (null for a whole record), column,
/// severity, code, message; character counts in the whole text.
output::Listing listingOf(const Rollout &rollout);

/// The problems for people and editors: `FILE:RECORD:FIELD:COLUMN: error: ...`, then the text with
/// the place marked, or the fields of a record that has too many or too few. Of many problems the
/// first 50 are shown, then the number of the others.
QStringList linesOf(const Rollout &rollout, const output::Terminal &terminal);

/// "2 errors, 1 warning in 2 files", or "DefaultKeys: 24 keys, no problems".
QString summaryOf(const Rollout &rollout);

int countOf(const Rollout &rollout, Severity severity);

} // namespace defaults
