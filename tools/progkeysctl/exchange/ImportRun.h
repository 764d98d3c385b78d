#pragma once

#include "client/ProgrammableKeys.h"
#include "exchange/ImportPlan.h"
#include "outcome/Failure.h"
#include "output/Listing.h"

#include <functional>
#include <optional>

namespace exchange {

/// What became of the import: a row a step, in order, and why it ended early, if it did.
struct ImportResult
{
    output::Listing steps;
    std::optional<Failure> failure;
    int added = 0;
    int changed = 0;
    int skipped = 0;
};

/// What the plan is to do, without doing it.
ImportResult describe(const ImportPlan &plan);

/// Called before each step, with how many are done and how many there are.
using Progress = std::function<void(int done, int all)>;

/// Carries the plan out. It stops at the first step that does not go well, or when it is
/// interrupted; each row then says whether its step was done.
ImportResult carryOut(const ImportPlan &plan, client::ProgrammableKeys &service,
                      const Progress &progress);

} // namespace exchange
