#pragma once

#include "client/ProgrammableKeys.h"
#include "exchange/ImportPlan.h"
#include "outcome/Failure.h"
#include "output/Listing.h"

namespace exchange {

/// The outcome of an import: a row for each step, and why it ended early, if it did.
struct ImportResult
{
    output::Listing steps;
    std::optional<Failure> failure;
};

/// The steps of the plan, with the outcome "planned" or "skipped".
output::Listing listingOf(const ImportPlan &plan);

/// Carries the plan out. Stops at the first step that fails, and when SIGINT, SIGTERM or SIGHUP
/// arrives, unless it is ignored.
ImportResult carryOut(const ImportPlan &plan, client::ProgrammableKeys &service);

} // namespace exchange
