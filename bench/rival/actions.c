#include "events.h"
#include "operations.h"
#include "store.h"
#include "wire/fail.h"

#include <string.h>

int get_action(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idAction = 0;
    int result = sd_bus_message_read(call, "x", &idAction);
    if (result < 0)
        return result;
    sd_bus_message *reply = NULL;
    struct action action;
    sqlite3_stmt *const selection = select_action(idAction);
    result = sd_bus_message_new_method_return(call, &reply);
    if (result >= 0)
        result = sd_bus_message_open_container(reply, 'a', "(" ACTION ")");
    while (result >= 0 && step_action(selection, &action))
        result = append_action(reply, &action);
    sqlite3_reset(selection);
    if (result >= 0)
        result = sd_bus_message_close_container(reply);
    if (result >= 0)
        result = sd_bus_send(NULL, reply, NULL);
    sd_bus_message_unref(reply);
    return result;
}

static int change_action(sd_bus *bus, const struct action *action)
{
    struct action old;
    sqlite3_stmt *const selection = select_action(action->idAction);
    const bool exists = step_action(selection, &old);
    const bool is_same_label = exists && strcmp(old.shortLabel, action->shortLabel) == 0;
    sqlite3_reset(selection);
    if (!exists)
        return Refused;
    // The client changes no short labels, so the rival does not have to send them to the modules.
    if (!is_same_label)
        fail("modifyAction", "a changed short label");
    const int code = update_action(action);
    if (code == StoreOk)
        send_action_modified(bus, action);
    return code;
}

int modify_action(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct action action;
    const int result = read_action(call, &action);
    if (result < 0)
        return result;
    const int code = change_action(sd_bus_message_get_bus(call), &action);
    return sd_bus_reply_method_return(call, "i", code);
}
