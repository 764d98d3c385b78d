#pragma once

#include "output/Listing.h"
#include "output/Terminal.h"

#include <QString>

namespace output {

/// The listing as a table, each line ended. Where the terminal is too narrow the widest columns
/// give way first; in one too narrow even for that, each row is told field by field.
QString tableText(const Listing &listing, const Terminal &terminal, bool hasLegend);

/// The fields of one row, one below the other.
QString recordText(const QList<Column> &columns, const QJsonObject &row, const Terminal &terminal);

} // namespace output
