#include "work.h"

#include "fail.h"
#include "wire/names.h"
#include "wire/records.h"

#include <errno.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

static const int KeysOfModule = 24;
static const uint64_t LimitMicroseconds =
    UINT64_C(25) * 1000 * 1000; // the bus library's own for a call

// All over the table, as keys are pressed, not along it.
static int64_t row(const struct caller *caller, long number)
{
    const int64_t stride = 7919; // a prime, so that every row has its turn
    return 1 + number * stride % caller->rows;
}

static sd_bus_message *new_call(struct caller *caller, const char *method)
{
    sd_bus_message *call = NULL;
    check(sd_bus_message_new_method_call(caller->bus, &call, SERVICE, SERVICE_PATH, OPERATIONS,
                                         method),
          method);
    return call;
}

// Sends the call, which is given up by it, and waits for the reply.
static sd_bus_message *answer(struct caller *caller, sd_bus_message *call)
{
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message *reply = NULL;
    const int result = sd_bus_call(caller->bus, call, 0, &error, &reply);
    if (result < 0)
        fail(error.message ? error.message : sd_bus_message_get_member(call), result);
    sd_bus_message_unref(call);
    return reply;
}

static void expect(bool is_right, const char *what)
{
    if (!is_right)
        fail(what, -EBADMSG);
}

static sd_bus_message *read_row(struct caller *caller, const char *method, int64_t id)
{
    sd_bus_message *call = new_call(caller, method);
    check(sd_bus_message_append(call, "x", id), method);
    return answer(caller, call);
}

static void get_action(struct caller *caller, long number)
{
    const int64_t id = row(caller, number);
    sd_bus_message *reply = read_row(caller, "getAction", id);
    struct action action = {0};
    check(sd_bus_message_enter_container(reply, 'a', "(" ACTION ")"), "getAction");
    expect(check(read_action(reply, &action), "getAction") > 0 && action.idAction == id,
           "getAction: not the action asked for");
    sd_bus_message_unref(reply);
}

static void get_key(struct caller *caller, long number)
{
    const int64_t id = row(caller, number);
    sd_bus_message *reply = read_row(caller, "getProgrammableKey", id);
    struct key key = {0};
    check(sd_bus_message_enter_container(reply, 'a', "(" KEY ")"), "getProgrammableKey");
    expect(check(read_key(reply, &key), "getProgrammableKey") > 0 && key.idKey == id,
           "getProgrammableKey: not the key asked for");
    sd_bus_message_unref(reply);
}

static void get_all_keys(struct caller *caller, long number)
{
    (void)number;
    sd_bus_message *reply = answer(caller, new_call(caller, "getAllProgrammableKeys"));
    check(sd_bus_message_enter_container(reply, 'a', "(" KEY ")"), "getAllProgrammableKeys");
    int64_t count = 0;
    while (check(sd_bus_message_skip(reply, "(" KEY ")"), "getAllProgrammableKeys") > 0)
        ++count;
    expect(count == caller->rows, "getAllProgrammableKeys: not as many keys as are stored");
    sd_bus_message_unref(reply);
}

// As it is stored, but for the label, which no other run gave it.
static void modify_action(struct caller *caller, long number)
{
    const int64_t id = row(caller, number);
    char arguments[24];
    char label[64];
    char short_label[32];
    snprintf(arguments, sizeof arguments, "%" PRId64, 500 + id);
    snprintf(label, sizeof label, "Office %" PRId64 " %d.%ld", id, (int)getpid(), number);
    snprintf(short_label, sizeof short_label, "Off %" PRId64, id);
    const struct action action = {id, "", 1, "call", "", arguments, label, short_label};
    sd_bus_message *call = new_call(caller, "modifyAction");
    check(append_action(call, &action), "modifyAction");
    sd_bus_message *reply = answer(caller, call);
    int32_t code = -1;
    check(sd_bus_message_read(reply, "i", &code), "modifyAction");
    expect(code == 0, "modifyAction: refused");
    sd_bus_message_unref(reply);
}

static void create_key(struct caller *caller, long number)
{
    const struct key key = {-1, "", row(caller, number), "main", (int32_t)number, "phone", 0, 0, 0};
    sd_bus_message *call = new_call(caller, "createProgrammableKey");
    check(append_key(call, &key), "createProgrammableKey");
    sd_bus_message *reply = answer(caller, call);
    int64_t id = -1;
    check(sd_bus_message_read(reply, "x", &id), "createProgrammableKey");
    expect(id > 0, "createProgrammableKey: refused");
    caller->made[caller->made_count++] = id;
    sd_bus_message_unref(reply);
}

static void delete_made_keys(struct caller *caller)
{
    while (caller->made_count > 0)
        sd_bus_message_unref(
            read_row(caller, "deleteProgrammableKey", caller->made[--caller->made_count]));
}

// The first argument carries the key.
static int see_answer(sd_bus_message *event, void *data, sd_bus_error *error)
{
    (void)error;
    struct caller *const caller = data;
    const char *name = NULL;
    struct key key = {0};
    check(sd_bus_message_skip(event, "s"), "AOMKEY_PRESS_NTF");
    check(sd_bus_message_enter_container(event, 'a', "(svb)"), "AOMKEY_PRESS_NTF");
    check(sd_bus_message_enter_container(event, 'r', "svb"), "AOMKEY_PRESS_NTF");
    check(sd_bus_message_read(event, "s", &name), "AOMKEY_PRESS_NTF");
    check(sd_bus_message_enter_container(event, 'v', "(" KEY ")"), "AOMKEY_PRESS_NTF");
    check(read_key(event, &key), "AOMKEY_PRESS_NTF");
    expect(strcmp(name, "key") == 0 && key.idKey == caller->pressed,
           "AOMKEY_PRESS_NTF: not the key that was pressed");
    caller->pressed = 0;
    return 0;
}

static void listen_to_answers(struct caller *caller)
{
    check(sd_bus_add_match(caller->bus, NULL,
                           "type='signal',interface='" EVENTS "',member='" EVENT
                           "',arg0='AOMKEY_PRESS_NTF'",
                           see_answer, caller),
          "listening to AOMKEY_PRESS_NTF");
}

static void press(struct caller *caller, long number)
{
    caller->pressed = row(caller, number);
    const int at = (int)(caller->pressed - 1);
    sd_bus_message *event = NULL;
    check(sd_bus_message_new_signal(caller->bus, &event, "/com/velmora/Tessaro/Driver", EVENTS,
                                    EVENT),
          "AOM_KEY_PRESS_EVENT");
    check(sd_bus_message_append(event, "sa(svb)", "AOM_KEY_PRESS_EVENT", 3, "aom_key_num", "i",
                                at % KeysOfModule, 1, "aom_type", "i", 1, 1, "addr", "i",
                                at / KeysOfModule, 1),
          "AOM_KEY_PRESS_EVENT");
    check(sd_bus_send(caller->bus, event, NULL), "AOM_KEY_PRESS_EVENT");
    sd_bus_message_unref(event);
    while (caller->pressed != 0) {
        if (check(sd_bus_process(caller->bus, NULL), "the bus") == 0 &&
            check(sd_bus_wait(caller->bus, LimitMicroseconds), "the bus") == 0)
            fail("waiting for AOMKEY_PRESS_NTF", -ETIMEDOUT);
    }
}

static void do_nothing(struct caller *caller, long number)
{
    (void)number;
    sd_bus_message_unref(answer(caller, new_call(caller, "doNothing")));
}

static const struct work Works[] = {
    {"get-action", false, NULL, get_action, NULL},
    {"get-key", false, NULL, get_key, NULL},
    {"get-all-keys", false, NULL, get_all_keys, NULL},
    {"press", true, listen_to_answers, press, NULL},
    {"modify-action", false, NULL, modify_action, NULL},
    {"create-key", false, NULL, create_key, delete_made_keys},
    {"noop", false, NULL, do_nothing, NULL},
};

const struct work *find_work(const char *name)
{
    for (size_t i = 0; i < sizeof Works / sizeof *Works; ++i)
        if (strcmp(Works[i].name, name) == 0)
            return &Works[i];
    return NULL;
}
