#pragma once

#include "output/Listing.h"
#include "output/Terminal.h"

namespace output {

/// The listing as a table that fits the terminal: long texts are wrapped. If it cannot fit, each
/// row is printed with one field in a line.
QString tableText(const Listing &listing, const Terminal &terminal, bool hasLegend);

/// One row with one field in a line.
QString recordText(const QList<Column> &columns, const QJsonObject &row, const Terminal &terminal);

} // namespace output
