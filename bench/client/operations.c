#include "operations.h"

#include "wire/fail.h"
#include "wire/names.h"

#include <inttypes.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

static const int KeysOfModule = 24;

// Visits all stored rows, but not in the order of their ids.
static int64_t row(const struct caller *caller, long number)
{
    const int64_t stride = 7919; // a prime, so that each row is visited
    return 1 + number * stride % caller->rows;
}

// The harness stores these keys and actions.
static struct key stored_key(int64_t id)
{
    const int at = (int)(id - 1);
    return (struct key){id, "", id, "module", at % KeysOfModule, "phone", 1, 1, at / KeysOfModule};
}

struct stored_action
{
    struct action action;
    char arguments[24];
    char label[64];
    char short_label[32];
};

static const struct action *store_action(struct stored_action *stored, int64_t id)
{
    snprintf(stored->arguments, sizeof stored->arguments, "%" PRId64, 500 + id);
    snprintf(stored->label, sizeof stored->label, "Office %" PRId64, id);
    snprintf(stored->short_label, sizeof stored->short_label, "Off %" PRId64, id);
    stored->action = (struct action){
        id, "", 1, "call", "", stored->arguments, stored->label, stored->short_label};
    return &stored->action;
}

// Each write has a unique label, because SQLite does not write unchanged pages.
static const struct action *modified_action(struct stored_action *stored, int64_t id, long number)
{
    store_action(stored, id);
    snprintf(stored->label, sizeof stored->label, "Office %" PRId64 " %d.%ld", id, (int)getpid(),
             number);
    return &stored->action;
}

// An earlier run may have modified the label.
static void expect_stored_action(struct action *action, int64_t id, const char *what)
{
    struct stored_action stored;
    const struct action *const expected = store_action(&stored, id);
    const size_t length = strlen(expected->label);
    if (strncmp(action->label, expected->label, length) == 0 && action->label[length] == ' ')
        action->label = expected->label;
    expect_action(action, expected, what);
}

static sd_bus_message *call_with_id(struct caller *caller, const char *method, int64_t id)
{
    sd_bus_message *call = new_call(caller, method);
    check(sd_bus_message_append(call, "x", id), method);
    return answer(caller, call);
}

static sd_bus_message *read_one_action(struct caller *caller, int64_t id, struct action *action)
{
    sd_bus_message *reply = call_with_id(caller, "getAction", id);
    check(sd_bus_message_enter_container(reply, 'a', "(" ACTION ")"), "getAction");
    expect(check(read_action(reply, action), "getAction") > 0, "getAction");
    expect(sd_bus_message_at_end(reply, 0) > 0, "getAction");
    return reply;
}

static void get_action(struct caller *caller, long number)
{
    const int64_t id = row(caller, number);
    struct action action = {0};
    sd_bus_message *reply = read_one_action(caller, id, &action);
    expect_stored_action(&action, id, "getAction");
    sd_bus_message_unref(reply);
}

static void expect_key_at(struct caller *caller, int64_t id, const struct key *expected)
{
    sd_bus_message *reply = call_with_id(caller, "getProgrammableKey", id);
    struct key key = {0};
    check(sd_bus_message_enter_container(reply, 'a', "(" KEY ")"), "getProgrammableKey");
    expect(check(read_key(reply, &key), "getProgrammableKey") > 0, "getProgrammableKey");
    expect(sd_bus_message_at_end(reply, 0) > 0, "getProgrammableKey");
    expect_key(&key, expected, "getProgrammableKey");
    sd_bus_message_unref(reply);
}

static void get_key(struct caller *caller, long number)
{
    const int64_t id = row(caller, number);
    const struct key expected = stored_key(id);
    expect_key_at(caller, id, &expected);
}

static void get_all_keys(struct caller *caller, long number)
{
    (void)number;
    sd_bus_message *reply = answer(caller, new_call(caller, "getAllProgrammableKeys"));
    struct key key = {0};
    int64_t count = 0;
    check(sd_bus_message_enter_container(reply, 'a', "(" KEY ")"), "getAllProgrammableKeys");
    while (check(read_key(reply, &key), "getAllProgrammableKeys") > 0) {
        const struct key expected = stored_key(++count);
        expect_key(&key, &expected, "getAllProgrammableKeys");
    }
    expect(count == caller->rows, "getAllProgrammableKeys");
    sd_bus_message_unref(reply);
}

static void expect_code(sd_bus_message *reply, const char *method)
{
    int32_t code = -1;
    check(sd_bus_message_read(reply, "i", &code), method);
    expect(code == 0, method);
    sd_bus_message_unref(reply);
}

static void modify_action(struct caller *caller, long number)
{
    struct stored_action stored;
    const struct action *const action = modified_action(&stored, row(caller, number), number);
    sd_bus_message *call = new_call(caller, "modifyAction");
    check(append_action(call, action), "modifyAction");
    expect_code(answer(caller, call), "modifyAction");
    expect_action_event(caller, "ACTION_MODIFY_NTF", action);
}

// Checks the last modification of each row.
static void expect_modified_actions(struct caller *caller, long count)
{
    const long first = count > caller->rows ? count - (long)caller->rows : 0;
    for (long number = first; number < count; ++number) {
        struct stored_action stored;
        struct action action = {0};
        const int64_t id = row(caller, number);
        sd_bus_message *reply = read_one_action(caller, id, &action);
        expect_action(&action, modified_action(&stored, id, number), "the modified action");
        sd_bus_message_unref(reply);
    }
}

static struct key new_key(const struct caller *caller, long number)
{
    return (struct key){-1, "", row(caller, number), "main", (int32_t)number, "phone", 0, 0, 0};
}

static int64_t call_create_key(struct caller *caller, const struct key *key)
{
    sd_bus_message *call = new_call(caller, "createProgrammableKey");
    check(append_key(call, key), "createProgrammableKey");
    sd_bus_message *reply = answer(caller, call);
    int64_t id = 0;
    check(sd_bus_message_read(reply, "x", &id), "createProgrammableKey");
    sd_bus_message_unref(reply);
    return id;
}

static void create_key(struct caller *caller, long number)
{
    struct key key = new_key(caller, number);
    key.idKey = call_create_key(caller, &key);
    expect(key.idKey > 0, "createProgrammableKey");
    caller->created[number] = key.idKey;
    expect_key_event(caller, "KEY_CREATE_NTF", &key);
}

// Checks and deletes each created key.
static void delete_created_keys(struct caller *caller, long count)
{
    for (long number = 0; number < count; ++number) {
        struct key key = new_key(caller, number);
        key.idKey = caller->created[number];
        expect_key_at(caller, key.idKey, &key);
        expect_code(call_with_id(caller, "deleteProgrammableKey", key.idKey),
                    "deleteProgrammableKey");
    }
}

// Requires that the key limit is reached.
static void create_key_above_limit(struct caller *caller, long number)
{
    const struct key key = new_key(caller, number);
    expect(call_create_key(caller, &key) == -1, "createProgrammableKey above the limit");
    expect_bare_event(caller, "KO_PROGKEYS_DB_FULL");
}

static void send_press(struct caller *caller, const struct key *key)
{
    sd_bus_message *event = NULL;
    check(sd_bus_message_new_signal(caller->bus, &event, "/com/velmora/Tessaro/Driver", EVENTS,
                                    EVENT),
          "AOM_KEY_PRESS_EVENT");
    check(sd_bus_message_append(event, "sa(svb)", "AOM_KEY_PRESS_EVENT", 3, "aom_key_num", "i",
                                key->position, 1, "aom_type", "i", key->aom_type, 1, "addr", "i",
                                key->aom_addr, 1),
          "AOM_KEY_PRESS_EVENT");
    check(sd_bus_send(caller->bus, event, NULL), "AOM_KEY_PRESS_EVENT");
    sd_bus_message_unref(event);
}

static void press(struct caller *caller, long number)
{
    const struct key expected = stored_key(row(caller, number));
    struct key key = {0};
    struct action action = {0};
    int exists = 0;
    send_press(caller, &expected);
    sd_bus_message *const event = next_event(caller, "AOMKEY_PRESS_NTF");
    enter_argument(event, "key", "(" KEY ")");
    check(read_key(event, &key), "AOMKEY_PRESS_NTF");
    expect_key(&key, &expected, "AOMKEY_PRESS_NTF");
    exit_argument(event);
    enter_argument(event, "action", "(" ACTION ")");
    check(read_action(event, &action), "AOMKEY_PRESS_NTF");
    expect_stored_action(&action, expected.idAction, "AOMKEY_PRESS_NTF");
    exit_argument(event);
    enter_argument(event, "exists", "b");
    check(sd_bus_message_read(event, "b", &exists), "AOMKEY_PRESS_NTF");
    expect(exists, "AOMKEY_PRESS_NTF");
    sd_bus_message_unref(event);
}

static void do_nothing(struct caller *caller, long number)
{
    (void)number;
    sd_bus_message_unref(answer(caller, new_call(caller, "doNothing")));
}

static const struct operation Operations[] = {
    {"get-action", get_action, NULL, false},
    {"get-key", get_key, NULL, false},
    {"get-all-keys", get_all_keys, NULL, false},
    {"press", press, NULL, true},
    {"modify-action", modify_action, expect_modified_actions, false},
    {"create-key", create_key, delete_created_keys, false},
    {"create-key-above-limit", create_key_above_limit, NULL, false},
    {"do-nothing", do_nothing, NULL, false},
};

const struct operation *find_operation(const char *name)
{
    for (size_t i = 0; i < sizeof Operations / sizeof *Operations; ++i)
        if (strcmp(Operations[i].name, name) == 0)
            return &Operations[i];
    return NULL;
}
