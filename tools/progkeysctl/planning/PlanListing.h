#pragma once

#include "output/Listing.h"
#include "planning/Plan.h"

namespace defaults {

/// The plan as rows: what happens to which action, key or record. A change takes a row a field.
output::Listing listingOf(const Plan &plan);

} // namespace defaults
