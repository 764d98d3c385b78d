#pragma once

#include "output/Listing.h"
#include "output/Terminal.h"

#include <QStringList>

namespace output {

/// These fields of the listing as a table. Long texts are wrapped to fit the terminal.
QString tableText(const Listing &listing, const QStringList &fields, const Terminal &terminal,
                  bool hasLegend);

/// One row with one field in a line.
QString recordText(const QJsonObject &row, const QStringList &fields, const Terminal &terminal);

} // namespace output
