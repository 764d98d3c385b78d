#include "fail.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

_Noreturn void fail(const char *what, int error)
{
    fprintf(stderr, "bench_client: %s: %s\n", what, strerror(-error));
    exit(EXIT_FAILURE);
}

int check(int result, const char *what)
{
    if (result < 0)
        fail(what, result);
    return result;
}
