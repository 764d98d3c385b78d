#include "events.h"
#include "operations.h"
#include "store.h"
#include "wire/fail.h"
#include "wire/names.h"

#include <stdlib.h>

static const uint64_t LimitMicroseconds = UINT64_C(5) * 1000 * 1000;

static int reply_keys(sd_bus_message *call, sqlite3_stmt *selection)
{
    sd_bus_message *reply = NULL;
    struct key key;
    int result = sd_bus_message_new_method_return(call, &reply);
    if (result >= 0)
        result = sd_bus_message_open_container(reply, 'a', "(" KEY ")");
    while (result >= 0 && step_key(selection, &key))
        result = append_key(reply, &key);
    sqlite3_reset(selection);
    if (result >= 0)
        result = sd_bus_message_close_container(reply);
    if (result >= 0)
        result = sd_bus_send(NULL, reply, NULL);
    sd_bus_message_unref(reply);
    return result;
}

int get_all_keys(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    return reply_keys(call, select_all_keys());
}

int get_key(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idKey = 0;
    const int result = sd_bus_message_read(call, "x", &idKey);
    return result < 0 ? result : reply_keys(call, select_key(idKey));
}

static bool action_exists(int64_t idAction)
{
    struct action action;
    sqlite3_stmt *const selection = select_action(idAction);
    const bool exists = step_action(selection, &action);
    sqlite3_reset(selection);
    return exists;
}

// Asks the SettingsManager for a setting. Returns false if it cannot be read.
static bool read_setting(sd_bus *bus, const char *name, int *value)
{
    sd_bus_message *reply = NULL;
    const char *text = NULL;
    sd_bus_message *call = NULL;
    const bool is_read = sd_bus_message_new_method_call(bus, &call, SETTINGS, SETTINGS_PATH,
                                                        OPERATIONS, "getSettingValue") >= 0 &&
                         sd_bus_message_append(call, "s", name) >= 0 &&
                         sd_bus_call(bus, call, LimitMicroseconds, NULL, &reply) >= 0 &&
                         sd_bus_message_read(reply, "s", &text) > 0;
    if (is_read)
        *value = (int)strtol(text, NULL, 10);
    sd_bus_message_unref(reply);
    sd_bus_message_unref(call);
    return is_read;
}

static bool has_room(sd_bus *bus)
{
    int limit = 0;
    const bool is_limited = read_setting(bus, "ProgKeysMax", &limit);
    return !is_limited || count_keys_of_type(SetKey) < limit;
}

static int64_t store_key(sd_bus *bus, struct key *key)
{
    // The client creates no module keys, so the rival does not have to send icons to the modules.
    if (key->type != SetKey)
        fail("createProgrammableKey", "not a key on the set");
    if (!action_exists(key->idAction))
        return Refused;
    if (!has_room(bus)) {
        send_keys_full(bus);
        return KeysFull;
    }
    if (insert_key(key) != StoreOk)
        return Refused;
    send_key_created(bus, key);
    return key->idKey;
}

int create_key(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct key key;
    const int result = read_key(call, &key);
    if (result < 0)
        return result;
    return sd_bus_reply_method_return(call, "x", store_key(sd_bus_message_get_bus(call), &key));
}

static bool is_removable(int64_t idKey)
{
    struct key key;
    sqlite3_stmt *const selection = select_key(idKey);
    const bool removable = step_key(selection, &key) && *key.dmId == '\0';
    sqlite3_reset(selection);
    return removable;
}

int remove_key(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idKey = 0;
    const int result = sd_bus_message_read(call, "x", &idKey);
    if (result < 0)
        return result;
    int code = is_removable(idKey) ? delete_key(idKey) : Refused;
    if (code == StoreOk)
        send_key_deleted(sd_bus_message_get_bus(call), idKey);
    return sd_bus_reply_method_return(call, "i", code);
}
