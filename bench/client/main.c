// The one client of all servers, so that only the server differs.

#include "run.h"
#include "start.h"

#include <argp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char Documentation[] =
    "Does WORK again and again on the service at the system bus, and prints how long it took.\v"
    "Works: get-action, get-key, get-all-keys, press, modify-action, create-key, noop; "
    "or start, which measures how long COMMAND takes to own its name.";

static const struct argp_option Options[] = {
    {"count", 'n', "N", 0, "operations that are timed (1000)", 0},
    {"warmup", 'w', "N", 0, "operations before that (20)", 0},
    {"callers", 'c', "N", 0, "callers at the same time (1)", 0},
    {"rows", 'r', "N", 0, "keys and actions that are stored (100)", 0},
    {0},
};

struct arguments
{
    struct run run;
    char **command;
};

static long parse_number(const char *text, long least, struct argp_state *state)
{
    char *end = NULL;
    const long number = strtol(text, &end, 10);
    if (*text == '\0' || *end != '\0' || number < least)
        argp_error(state, "%s is not a number from %ld upward", text, least);
    return number;
}

static void parse_work(const char *name, struct arguments *arguments, struct argp_state *state)
{
    if (strcmp(name, "start") == 0) {
        if (state->next < state->argc && strcmp(state->argv[state->next], "--") == 0)
            ++state->next;
        arguments->command = state->argv + state->next;
        if (state->next == state->argc)
            argp_error(state, "start needs a command");
        state->next = state->argc;
        return;
    }
    arguments->run.work = find_work(name);
    if (!arguments->run.work)
        argp_error(state, "there is no work %s", name);
}

static error_t parse(int key, char *text, struct argp_state *state)
{
    struct arguments *const arguments = state->input;
    switch (key) {
    case 'n':
        arguments->run.count = parse_number(text, 1, state);
        return 0;
    case 'w':
        arguments->run.warmup = parse_number(text, 0, state);
        return 0;
    case 'c':
        arguments->run.callers = parse_number(text, 1, state);
        return 0;
    case 'r':
        arguments->run.rows = parse_number(text, 1, state);
        return 0;
    case ARGP_KEY_ARG:
        if (arguments->run.work)
            argp_error(state, "one work at a time");
        parse_work(text, arguments, state);
        return 0;
    case ARGP_KEY_END:
        if (!arguments->run.work && !arguments->command)
            argp_error(state, "no work is named");
        return 0;
    default:
        return ARGP_ERR_UNKNOWN;
    }
}

static void print(const char *work, long count, long callers, double seconds)
{
    printf("{\"work\": \"%s\", \"count\": %ld, \"callers\": %ld, \"seconds\": %.9f}\n", work, count,
           callers, seconds);
}

int main(int argc, char **argv)
{
    const struct argp argp = {.options = Options,
                              .parser = parse,
                              .args_doc = "WORK\nstart -- COMMAND...",
                              .doc = Documentation};
    struct arguments arguments = {.run = {.count = 1000, .warmup = 20, .callers = 1, .rows = 100}};
    argp_parse(&argp, argc, argv, ARGP_IN_ORDER, NULL, &arguments);
    if (arguments.command) {
        print("start", 1, 1, measure_start(arguments.command));
        return EXIT_SUCCESS;
    }
    const struct run *const run = &arguments.run;
    if (run->work->is_for_one_caller && run->callers > 1) {
        fprintf(stderr, "bench_client: %s is for one caller\n", run->work->name);
        return EXIT_FAILURE;
    }
    print(run->work->name, run->count, run->callers, perform_run(run));
    return EXIT_SUCCESS;
}
