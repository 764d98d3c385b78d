#include "start.h"

#include "fail.h"
#include "run.h"
#include "wire/names.h"

#include <systemd/sd-bus.h>

#include <errno.h>
#include <signal.h>
#include <stdbool.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

static const double LimitSeconds = 30;
static const uint64_t LookMicroseconds = 100000; // how often it is looked whether the process lives

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

// The process ends with this one, however that ends.
static pid_t launch(char **command)
{
    const pid_t child = fork();
    if (child < 0)
        fail("starting a process", -errno);
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
        const int progress = check(sd_bus_process(bus, NULL), "the bus");
        if (progress == 0)
            check(sd_bus_wait(bus, LookMicroseconds), "the bus");
        if (wanted && waitpid(child, NULL, WNOHANG) == child)
            fail("the process ended before it had the name", -ECHILD);
        if (now() > limit)
            fail("waiting for the service's name", -ETIMEDOUT);
    }
}

double measure_start(char **command)
{
    sd_bus *bus = NULL;
    bool is_owned = false;
    check(sd_bus_open_system(&bus), "reaching the bus");
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
    waitpid(child, NULL, 0);
    wait_for_owner(bus, &is_owned, false, child);
    sd_bus_flush_close_unref(bus);
    return seconds;
}
