#include "events.h"

#include "fail.h"
#include "wire/names.h"

#include <string.h>

#define KEY_VALUES(key)                                                                            \
    (key)->idKey, (key)->dmId, (key)->idAction, (key)->container, (key)->position, (key)->icon,    \
        (key)->type, (key)->aom_type, (key)->aom_addr
#define ACTION_VALUES(action)                                                                      \
    (action)->idAction, (action)->dmId, (action)->type, (action)->action, (action)->webAppName,    \
        (action)->arguments, (action)->label, (action)->shortLabel

// A failure here means that the bus is gone.
static void send(sd_bus *bus, const char *event, const char *types, ...)
{
    sd_bus_message *message = NULL;
    va_list values;
    va_start(values, types);
    if (sd_bus_message_new_signal(bus, &message, SERVICE_PATH, EVENTS, EVENT) < 0 ||
        sd_bus_message_append(message, "s", event) < 0 ||
        sd_bus_message_appendv(message, types, values) < 0 || sd_bus_send(bus, message, NULL) < 0)
        fail(event, "cannot be sent");
    va_end(values);
    sd_bus_message_unref(message);
}

void send_key_event(sd_bus *bus, const char *event, const struct key *key)
{
    send(bus, event, "a(svb)", 1, "idKey", "(" KEY ")", KEY_VALUES(key), 1);
}

void send_action_event(sd_bus *bus, const char *event, const struct action *action)
{
    send(bus, event, "a(svb)", 1, "idAction", "(" ACTION ")", ACTION_VALUES(action), 1);
}

void send_id_event(sd_bus *bus, const char *event, const char *argument, int64_t id)
{
    send(bus, event, "a(svb)", 1, argument, "x", id, 1);
}

void send_bare_event(sd_bus *bus, const char *event)
{
    send(bus, event, "a(svb)", 0);
}

void send_module_icon(sd_bus *bus, const struct key *key, int icon_x, int icon_y)
{
    send(bus, "AOM_SET_ICON_PROPERTY_REC", "a(svb)", 5, "addr", "i", key->aom_addr, 1, "aom_type",
         "i", key->aom_type, 1, "key_num", "i", key->position, 1, "icon_x", "i", icon_x, 1,
         "icon_y", "i", icon_y, 1);
}

void send_module_label(sd_bus *bus, const struct key *key, int state, const char *label)
{
    send(bus, "AOM_SET_LABEL_PROPERTY_REC", "a(svb)", 5, "addr", "i", key->aom_addr, 1, "aom_type",
         "i", key->aom_type, 1, "key_num", "i", key->position, 1, "label_state", "i", state, 1,
         "label_str", "s", label, 1);
}

void send_press(sd_bus *bus, const struct key *key, const struct action *action, bool exists)
{
    send(bus, "AOMKEY_PRESS_NTF", "a(svb)", 3, "key", "(" KEY ")", KEY_VALUES(key), 1, "action",
         "(" ACTION ")", ACTION_VALUES(action), 1, "exists", "b", (int)exists, 1);
}
