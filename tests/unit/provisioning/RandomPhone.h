#pragma once

#include "provisioning/MemoryPhone.h"
#include "provisioning/Random.h"

namespace unit {

/// The two settings of a rollout.
struct Rollout
{
    QString actions;
    QString keys;
};

/// Few identifiers for many rows, so that they repeat, on both sides; some are empty.
QString randomDmId(Random &random);

/// Up to so many actions and so many keys, user rows among them, under ids with gaps.
void fill(MemoryPhone &phone, Random &random, int most);

/// Up to so many records of each kind, some of them broken, with escapes in some fields.
Rollout randomRollout(Random &random, int most);

} // namespace unit
