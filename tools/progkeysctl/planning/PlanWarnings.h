#pragma once

#include "planning/Plan.h"

namespace defaults {

/// Something that nobody is likely to want.
struct PlanWarning
{
    QString code; ///< what kind it is; stays the same when the message is reworded
    QString message;
};

/// What records with an empty identifier do to the rows of users, and that they come again.
QList<PlanWarning> warningsOf(const Plan &plan);

/// A setting that was not to be read, and what it counts as.
PlanWarning unreadable(const QString &setting, const QString &where);

} // namespace defaults
