#pragma once

#include <systemd/sd-bus.h>

#include <stdbool.h>
#include <stdint.h>

/// One caller: a connection of its own, with one call on its way at a time.
struct caller
{
    sd_bus *bus;
    int64_t rows;  ///< how many keys and actions are stored, with the ids from 1 upward
    int64_t *made; ///< ids of the keys made so far
    long made_count;
    int64_t pressed; ///< the key whose press is on its way; 0 once it is answered
};

/// Something to measure. A server that answers otherwise than it should ends the program: a wrong
/// answer is not a fast one.
struct work
{
    const char *name;
    bool is_for_one_caller;
    void (*prepare)(struct caller *caller);
    void (*perform)(struct caller *caller, long number);
    void (*clean)(struct caller *caller);
};

/// The work of that name, or null.
const struct work *find_work(const char *name);
