#pragma once

#include "defaults/Setting.h"
#include "output/Terminal.h"

namespace defaults {

/// All problems as rows: file, record, field and fieldName (null for a whole record), column,
/// severity, code, message; character counts in the whole text.
output::Listing listingOf(const QList<Setting> &settings);

/// The problems for people and editors: `FILE:RECORD:FIELD:COLUMN: error: ...`, then the text with
/// the place marked, or the fields of a record that has too many or too few. Of many problems the
/// first 50 are shown, then the number of the others.
QStringList linesOf(const QList<Setting> &settings, const output::Terminal &terminal);

/// "2 errors, 1 warning in 2 files", or "DefaultKeys: 24 keys, no problems".
QString summaryOf(const QList<Setting> &settings);

int countOf(const QList<Setting> &settings, Severity severity);

} // namespace defaults
