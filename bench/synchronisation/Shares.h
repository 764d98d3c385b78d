#pragma once

#include "module/ZelProgrammableKeys.h"

#include <vector>

/// What one synchronisation took, and what its parts take when they are done again by themselves.
/// Seconds.
struct Shares
{
    double whole = 0;
    double settings = 0;
    double statements = 0;
    double events = 0;
};

/// The module of this process. It publishes nothing.
inline ZelProgrammableKeys &module()
{
    return *ZelProgrammableKeys::instance(nullptr);
}

/// Measures one synchronisation of the rows that the phone has: every action is updated, every key
/// made anew.
Shares measureSynchronisation(int count);

/// The median of each figure by itself.
Shares medianOf(const std::vector<Shares> &runs);
