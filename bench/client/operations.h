#pragma once

#include "checks.h"

/// An operation to measure. The program fails if the server sends a wrong reply.
struct operation
{
    const char *name;
    /// Performs the operation once. `number` is 0 at the first call of a run and increases by 1.
    void (*perform)(struct caller *caller, long number);
    /// Checks the records that `count` operations stored, and removes new ones. May be null.
    void (*finish)(struct caller *caller, long count);
    /// Whether the operation needs the server's events during the measurement.
    bool needs_events;
};

/// The operation with that name, or null.
const struct operation *find_operation(const char *name);
