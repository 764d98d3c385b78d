// The client of all servers. It checks each answer, so that only correct work is timed: replies
// while the clock runs, events during the warm-up, and what was stored at the end.

#include "start.h"
#include "wire/fail.h"
#include "works.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

struct arguments
{
    const struct work *work;
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

static double measure_work(const struct arguments *arguments)
{
    const struct work *const work = arguments->work;
    const long all = arguments->warmup + arguments->count;
    struct caller caller = {.rows = arguments->rows};
    caller.made = calloc((size_t)all, sizeof *caller.made);
    if (!caller.made)
        fail("the ids of created keys", "out of memory");
    check(sd_bus_open_system(&caller.bus), "the bus");

    subscribe(&caller);
    for (long number = 0; number < arguments->warmup; ++number)
        work->perform(&caller, number);
    expect_no_event(&caller);
    if (!work->needs_events)
        unsubscribe(&caller);
    const double begin = now();
    for (long number = arguments->warmup; number < all; ++number)
        work->perform(&caller, number);
    const double seconds = now() - begin;
    if (work->finish)
        work->finish(&caller, all);

    unsubscribe(&caller);
    sd_bus_flush_close_unref(caller.bus);
    free(caller.made);
    return seconds / (double)arguments->count;
}

// bench_client WORK COUNT WARMUP ROWS prints the seconds of one operation.
// bench_client start COMMAND... prints the seconds until the command owns the service's name.
int main(int argc, char **argv)
{
    if (argc > 2 && strcmp(argv[1], "start") == 0) {
        printf("%.9f\n", measure_start(argv + 2));
        return EXIT_SUCCESS;
    }
    if (argc != 5)
        fail("usage", "bench_client WORK COUNT WARMUP ROWS, or bench_client start COMMAND...");
    const struct arguments arguments = {.work = find_work(argv[1]),
                                        .count = parse_number(argv[2]),
                                        .warmup = parse_number(argv[3]),
                                        .rows = parse_number(argv[4])};
    if (!arguments.work)
        fail(argv[1], "unknown work");
    printf("%.9f\n", measure_work(&arguments));
    return EXIT_SUCCESS;
}
