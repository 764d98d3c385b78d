#include "start.h"

#include "wire/fail.h"
#include "wire/names.h"

#include <systemd/sd-bus.h>

#include <errno.h>
#include <signal.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static const double LimitSeconds = 30;
static const uint64_t PollMicroseconds = 100000; // between checks whether the process runs

double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

static int see_owner(sd_bus_message *change, void *data, sd_bus_error *error)
{
    (void)error;
    const char *name = NULL;
    const char *old_owner = NULL;
    const char *new_owner = NULL;
    check(sd_bus_message_read(change, "sss", &name, &old_owner, &new_owner), "a change of owner");
    *(bool *)data = *new_owner != '\0';
    return 0;
}

// The kernel kills the process when this one ends.
static pid_t launch(char **command)
{
    const pid_t child = fork();
    check(child < 0 ? -errno : 0, "starting a process");
    if (child > 0)
        return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    execvp(command[0], command);
    perror(command[0]);
    _exit(EXIT_FAILURE);
}

static void wait_for_owner(sd_bus *bus, const bool *is_owned, bool wanted, pid_t child)
{
    const double limit = now() + LimitSeconds;
    while (*is_owned != wanted) {
        if (check(sd_bus_process(bus, NULL), "the bus") == 0)
            check(sd_bus_wait(bus, PollMicroseconds), "the bus");
        if (wanted && waitpid(child, NULL, WNOHANG) == child)
            fail("starting the service", "the process ended before it owned its name");
        if (now() > limit)
            fail("waiting for the owner of the service's name", "timed out");
    }
}

double measure_start(char **command)
{
    sd_bus *bus = NULL;
    bool is_owned = false;
    int status = 0;
    check(sd_bus_open_system(&bus), "the bus");
    check(sd_bus_add_match(bus, NULL,
                           "type='signal',sender='org.freedesktop.DBus',"
                           "member='NameOwnerChanged',arg0='" SERVICE "'",
                           see_owner, &is_owned),
          "watching the service's name");
    const double start = now();
    const pid_t child = launch(command);
    wait_for_owner(bus, &is_owned, true, child);
    const double seconds = now() - start;
    kill(child, SIGTERM);
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) != EXIT_SUCCESS)
        fail("ending the service", "it returned an error status");
    wait_for_owner(bus, &is_owned, false, child);
    sd_bus_flush_close_unref(bus);
    return seconds;
}
