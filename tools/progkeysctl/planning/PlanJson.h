#pragma once

#include "output/Listing.h"
#include "planning/Plan.h"
#include "planning/PlanWarnings.h"

namespace defaults {

/// The fields of the object that a plan is.
QList<output::Column> planColumns();

/// The plan as an object. Numbers that are not known yet are null: those of everything made anew,
/// and that of the action of a key if the action is new. The key's action is then the first new one
/// of its dmId.
QJsonObject toJson(const Plan &plan, const QList<PlanWarning> &warnings);

} // namespace defaults
