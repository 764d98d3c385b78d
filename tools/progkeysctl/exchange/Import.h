#pragma once

#include "client/Phone.h"
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

/// The steps, with the outcome "planned" or "skipped".
output::Listing listingOf(const QList<Step> &steps);

/// Carries the steps out. Stops at the first one that fails, and when SIGINT, SIGTERM or SIGHUP
/// arrives, unless it is ignored.
ImportResult carryOut(const QList<Step> &steps, const client::Phone &phone);

} // namespace exchange
