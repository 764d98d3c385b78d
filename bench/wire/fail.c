#define _GNU_SOURCE
#include "wire/fail.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

_Noreturn void fail(const char *what, const char *why)
{
    fprintf(stderr, "%s: %s: %s\n", program_invocation_short_name, what, why);
    exit(EXIT_FAILURE);
}

int check(int result, const char *what)
{
    if (result < 0)
        fail(what, strerror(-result));
    return result;
}
