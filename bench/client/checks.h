#pragma once

#include "wire/records.h"

#include <stdbool.h>

enum { MaxEvents = 8 };

/// A connection to the bus that makes one call at a time.
struct caller
{
    sd_bus *bus;
    int64_t rows;              ///< the number of stored keys and actions; their ids start at 1
    int64_t *created;          ///< the ids of the keys that this run created
    sd_bus_slot *subscription; ///< null if events are not received
    sd_bus_message *events[MaxEvents];
    int event_count;
};

/// A method call of the service. Append its arguments and pass it to `answer`.
sd_bus_message *new_call(struct caller *caller, const char *method);

/// Sends the call, drops the reference to it, and returns the reply.
sd_bus_message *answer(struct caller *caller, sd_bus_message *call);

/// Fails with a line that names `what` if the condition is false.
void expect(bool condition, const char *what);
void expect_key(const struct key *key, const struct key *expected, const char *what);
void expect_action(const struct action *action, const struct action *expected, const char *what);

/// Starts and stops receiving the service's events.
void subscribe(struct caller *caller);
void unsubscribe(struct caller *caller);

/// Waits for the next event, expects this name, and enters its array of arguments.
sd_bus_message *next_event(struct caller *caller, const char *name);

/// Enters the value of the next argument of an event and expects this name.
void enter_argument(sd_bus_message *event, const char *name, const char *type);
void exit_argument(sd_bus_message *event);

/// While subscribed: expects that the next event has this record, or has no arguments.
void expect_key_event(struct caller *caller, const char *name, const struct key *expected);
void expect_action_event(struct caller *caller, const char *name, const struct action *expected);
void expect_bare_event(struct caller *caller, const char *name);

/// While subscribed: expects that there is no other event. Make a call before, so that all events
/// have arrived.
void expect_no_event(struct caller *caller);
