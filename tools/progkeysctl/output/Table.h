#pragma once

#include "output/Listing.h"
#include "output/Terminal.h"

namespace output {

/// The listing as a table. Long texts are wrapped to fit the terminal.
QString tableText(const Listing &listing, const Terminal &terminal, bool hasLegend);

/// One row with one field in a line.
QString recordText(const QList<Column> &columns, const QJsonObject &row, const Terminal &terminal);

} // namespace output
