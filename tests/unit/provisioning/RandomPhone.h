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

/// One of a few identifiers, including an empty one, so that identifiers are repeated.
QString randomDmId(Random &random);

/// Stores up to `most` actions and keys, some of them of users. Their ids have gaps.
void fill(MemoryPhone &phone, Random &random, int most);

/// Up to `most` records of each kind, some of them invalid or with escapes.
Rollout randomRollout(Random &random, int most);

} // namespace unit
