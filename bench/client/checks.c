#include "checks.h"

#include "wire/fail.h"
#include "wire/names.h"

#include <stdlib.h>
#include <string.h>

static const uint64_t LimitMicroseconds = UINT64_C(25) * 1000 * 1000;

sd_bus_message *new_call(struct caller *caller, const char *method)
{
    sd_bus_message *call = NULL;
    check(sd_bus_message_new_method_call(caller->bus, &call, SERVICE, SERVICE_PATH, OPERATIONS,
                                         method),
          method);
    return call;
}

sd_bus_message *answer(struct caller *caller, sd_bus_message *call)
{
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = NULL;
    if (sd_bus_call(caller->bus, call, LimitMicroseconds, &error, &reply) < 0)
        fail(sd_bus_message_get_member(call), error.message ? error.message : "no reply");
    sd_bus_message_unref(call);
    return reply;
}

void expect(bool condition, const char *what)
{
    if (!condition)
        fail(what, "the reply is wrong");
}

void expect_key(const struct key *key, const struct key *expected, const char *what)
{
    expect(key->idKey == expected->idKey && strcmp(key->dmId, expected->dmId) == 0 &&
               key->idAction == expected->idAction &&
               strcmp(key->container, expected->container) == 0 &&
               key->position == expected->position && strcmp(key->icon, expected->icon) == 0 &&
               key->type == expected->type && key->aom_type == expected->aom_type &&
               key->aom_addr == expected->aom_addr,
           what);
}

void expect_action(const struct action *action, const struct action *expected, const char *what)
{
    expect(action->idAction == expected->idAction && strcmp(action->dmId, expected->dmId) == 0 &&
               action->type == expected->type && strcmp(action->action, expected->action) == 0 &&
               strcmp(action->webAppName, expected->webAppName) == 0 &&
               strcmp(action->arguments, expected->arguments) == 0 &&
               strcmp(action->label, expected->label) == 0 &&
               strcmp(action->shortLabel, expected->shortLabel) == 0,
           what);
}

static int keep_event(sd_bus_message *event, void *data, sd_bus_error *error)
{
    (void)error;
    struct caller *const caller = data;
    if (caller->event_count == MaxEvents)
        fail(EVENT, "more events than expected");
    caller->events[caller->event_count++] = sd_bus_message_ref(event);
    return 0;
}

void subscribe(struct caller *caller)
{
    check(sd_bus_add_match(caller->bus, &caller->subscription,
                           "type='signal',path='" SERVICE_PATH "',interface='" EVENTS
                           "',member='" EVENT "'",
                           keep_event, caller),
          "subscribing to events");
}

void unsubscribe(struct caller *caller)
{
    caller->subscription = sd_bus_slot_unref(caller->subscription);
}

sd_bus_message *next_event(struct caller *caller, const char *name)
{
    while (caller->event_count == 0) {
        if (check(sd_bus_process(caller->bus, NULL), "the bus") == 0 &&
            check(sd_bus_wait(caller->bus, LimitMicroseconds), "the bus") == 0)
            fail(name, "no such event");
    }
    sd_bus_message *const event = caller->events[0];
    --caller->event_count;
    memmove(caller->events, caller->events + 1,
            (size_t)caller->event_count * sizeof *caller->events);
    const char *found = NULL;
    check(sd_bus_message_read(event, "s", &found), name);
    if (strcmp(found, name) != 0)
        fail(name, "another event arrived");
    check(sd_bus_message_enter_container(event, 'a', "(svb)"), name);
    return event;
}

void enter_argument(sd_bus_message *event, const char *name, const char *type)
{
    const char *found = NULL;
    expect(check(sd_bus_message_enter_container(event, 'r', "svb"), name) > 0, name);
    check(sd_bus_message_read(event, "s", &found), name);
    expect(strcmp(found, name) == 0, name);
    check(sd_bus_message_enter_container(event, 'v', type), name);
}

void exit_argument(sd_bus_message *event)
{
    int flag = 0;
    check(sd_bus_message_exit_container(event), EVENT);
    check(sd_bus_message_read(event, "b", &flag), EVENT);
    expect(flag, "the flag of an argument");
    check(sd_bus_message_exit_container(event), EVENT);
}

void expect_key_event(struct caller *caller, const char *name, const struct key *expected)
{
    if (!caller->subscription)
        return;
    struct key key = {0};
    sd_bus_message *const event = next_event(caller, name);
    enter_argument(event, "idKey", "(" KEY ")");
    check(read_key(event, &key), name);
    expect_key(&key, expected, name);
    exit_argument(event);
    sd_bus_message_unref(event);
}

void expect_action_event(struct caller *caller, const char *name, const struct action *expected)
{
    if (!caller->subscription)
        return;
    struct action action = {0};
    sd_bus_message *const event = next_event(caller, name);
    enter_argument(event, "idAction", "(" ACTION ")");
    check(read_action(event, &action), name);
    expect_action(&action, expected, name);
    exit_argument(event);
    sd_bus_message_unref(event);
}

void expect_bare_event(struct caller *caller, const char *name)
{
    if (caller->subscription)
        sd_bus_message_unref(next_event(caller, name));
}

void expect_no_event(struct caller *caller)
{
    while (check(sd_bus_process(caller->bus, NULL), "the bus") > 0)
        ;
    expect(caller->event_count == 0, "an unexpected event");
}
