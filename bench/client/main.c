// The client for all servers. It checks the replies during the measurement, the events during the
// warm-up, and the stored records at the end, so that it times only correct operations.

#include "operations.h"
#include "start.h"
#include "wire/fail.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct arguments
{
    const struct operation *operation;
    long count;  ///< timed operations
    long warmup; ///< operations before them, whose events are checked
    long rows;   ///< stored keys and actions
};

static long parse_number(const char *text)
{
    char *end = NULL;
    const long number = strtol(text, &end, 10);
    if (*text == '\0' || *end != '\0' || number < 1)
        fail(text, "not a positive number");
    return number;
}

static double measure_operation(const struct arguments *arguments)
{
    const struct operation *const operation = arguments->operation;
    const long all = arguments->warmup + arguments->count;
    struct caller caller = {.rows = arguments->rows};
    caller.created = calloc((size_t)all, sizeof *caller.created);
    if (!caller.created)
        fail("the ids of created keys", "out of memory");
    check(sd_bus_open_system(&caller.bus), "the bus");

    subscribe(&caller);
    for (long number = 0; number < arguments->warmup; ++number)
        operation->perform(&caller, number);
    expect_no_event(&caller);
    if (!operation->needs_events)
        unsubscribe(&caller);
    const double begin = now();
    for (long number = arguments->warmup; number < all; ++number)
        operation->perform(&caller, number);
    const double seconds = now() - begin;
    if (operation->finish)
        operation->finish(&caller, all);

    unsubscribe(&caller);
    sd_bus_flush_close_unref(caller.bus);
    free(caller.created);
    return seconds / (double)arguments->count;
}

// bench_client OPERATION COUNT WARMUP ROWS prints the seconds of one operation.
// bench_client start COMMAND... prints the seconds until the command owns the service's name.
int main(int argc, char **argv)
{
    if (argc > 2 && strcmp(argv[1], "start") == 0) {
        printf("%.9f\n", measure_start(argv + 2));
        return EXIT_SUCCESS;
    }
    if (argc != 5)
        fail("usage", "bench_client OPERATION COUNT WARMUP ROWS, or bench_client start COMMAND...");
    const struct arguments arguments = {.operation = find_operation(argv[1]),
                                        .count = parse_number(argv[2]),
                                        .warmup = parse_number(argv[3]),
                                        .rows = parse_number(argv[4])};
    if (!arguments.operation)
        fail(argv[1], "unknown operation");
    printf("%.9f\n", measure_operation(&arguments));
    return EXIT_SUCCESS;
}
