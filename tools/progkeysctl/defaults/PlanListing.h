#pragma once

#include "defaults/Plan.h"
#include "output/Listing.h"

namespace defaults {

/// The plan as rows: what happens to which action, key or record. A change takes a row a field.
output::Listing listingOf(const Plan &plan);

} // namespace defaults
