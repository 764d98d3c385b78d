#pragma once

#include "checks.h"

/// Something to measure. The program fails if an answer of the server is wrong.
struct work
{
    const char *name;
    /// Does it once. `number` is unique within the run and rises from 0.
    void (*perform)(struct caller *caller, long number);
    /// Checks what `count` operations stored, and removes what they made; may be null.
    void (*finish)(struct caller *caller, long count);
    /// Whether it needs the server's events while the clock runs.
    bool needs_events;
};

/// The work of that name, or null.
const struct work *find_work(const char *name);
