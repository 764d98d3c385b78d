#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

/// Ends the process, for libFuzzer to keep the input, unless it holds.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

} // namespace fuzz
