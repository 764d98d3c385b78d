#include "events.h"

#include "wire/fail.h"
#include "wire/names.h"

#define KEY_VALUES(key)                                                                            \
    (key)->idKey, (key)->dmId, (key)->idAction, (key)->container, (key)->position, (key)->icon,    \
        (key)->type, (key)->aom_type, (key)->aom_addr
#define ACTION_VALUES(action)                                                                      \
    (action)->idAction, (action)->dmId, (action)->type, (action)->action, (action)->webAppName,    \
        (action)->arguments, (action)->label, (action)->shortLabel

// Sends an event. The arguments are those of an "a(svb)", preceded by their number.
static void send(sd_bus *bus, const char *event, ...)
{
    sd_bus_message *message = NULL;
    va_list values;
    va_start(values, event);
    check(sd_bus_message_new_signal(bus, &message, SERVICE_PATH, EVENTS, EVENT), event);
    check(sd_bus_message_append(message, "s", event), event);
    check(sd_bus_message_appendv(message, "a(svb)", values), event);
    check(sd_bus_send(bus, message, NULL), event);
    va_end(values);
    sd_bus_message_unref(message);
}

void send_key_created(sd_bus *bus, const struct key *key)
{
    send(bus, "KEY_CREATE_NTF", 1, "idKey", "(" KEY ")", KEY_VALUES(key), 1);
}

void send_key_deleted(sd_bus *bus, int64_t idKey)
{
    send(bus, "KEY_DELETE_NTF", 1, "idKey", "x", idKey, 1);
}

void send_keys_full(sd_bus *bus)
{
    send(bus, "KO_PROGKEYS_DB_FULL", 0);
}

void send_action_modified(sd_bus *bus, const struct action *action)
{
    send(bus, "ACTION_MODIFY_NTF", 1, "idAction", "(" ACTION ")", ACTION_VALUES(action), 1);
}

void send_press(sd_bus *bus, const struct key *key, const struct action *action)
{
    send(bus, "AOMKEY_PRESS_NTF", 3, "key", "(" KEY ")", KEY_VALUES(key), 1, "action",
         "(" ACTION ")", ACTION_VALUES(action), 1, "exists", "b", 1, 1);
}
