#pragma once

#include "output/Terminal.h"
#include "planning/Plan.h"

#include <QStringList>

namespace defaults {

/// What of a plan people want to see.
struct PlanView
{
    bool hasAll = false; ///< what stays as it is, too
    bool hasSums = true;
};

/// The plan as people read it, in lines that fit the terminal: `+` comes, `~` changes, `-` goes,
/// `=` stays as it is, `!` wants attention.
QStringList linesOf(const Plan &plan, const PlanView &view, const output::Terminal &terminal);

} // namespace defaults
