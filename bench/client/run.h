#pragma once

#include "work.h"

#include <stdint.h>

struct run
{
    const struct work *work;
    long count;   ///< operations of all callers together
    long warmup;  ///< operations of each caller before the clock runs
    long callers; ///< how many call at the same time
    int64_t rows;
};

/// Does the work and returns the seconds that its `count` operations took.
double perform_run(const struct run *run);

/// Seconds since some moment in the past, by a clock that nobody sets.
double now(void);
