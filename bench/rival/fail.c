#include "fail.h"

#include <stdio.h>
#include <stdlib.h>

_Noreturn void fail(const char *what, const char *why)
{
    fprintf(stderr, "bench_rival: %s: %s\n", what, why);
    exit(EXIT_FAILURE);
}
