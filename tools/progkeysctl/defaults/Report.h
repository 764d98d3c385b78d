#pragma once

#include "defaults/Setting.h"
#include "output/Listing.h"
#include "output/Terminal.h"

#include <QStringList>

namespace defaults {

/// What was found, as objects: file, record, field and fieldName (null for a record as a whole),
/// column, severity, code, message; and character, which counts in the whole text.
output::Listing listingOf(const QList<Setting> &settings);

/// What was found in one setting, as people and editors read it:
/// `FILE:RECORD:FIELD:COLUMN: error: ...`, then the text and a mark below the place. FIELD is 0 for
/// a record as a whole; COLUMN counts characters from 1 in the record.
QStringList linesOf(const Setting &setting, const output::Terminal &terminal);

/// "2 errors, 1 warning in 2 files", or "DefaultKeys: 24 keys, no complaint".
QString summaryOf(const QList<Setting> &settings);

int countOf(const QList<Setting> &settings, Severity severity);

} // namespace defaults
