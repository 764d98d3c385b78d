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

/// One of a few identifiers, so that they repeat in both tables and settings. One of them is empty.
QString randomDmId(Random &random);

/// Stores up to `most` actions and keys, some of them a user's, under ids with gaps.
void fill(MemoryPhone &phone, Random &random, int most);

/// Up to `most` records of each kind, some of them invalid or with escapes.
Rollout randomRollout(Random &random, int most);

} // namespace unit
