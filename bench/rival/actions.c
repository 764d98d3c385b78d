#include "events.h"
#include "operations.h"
#include "reply.h"
#include "store.h"

#include <stdlib.h>
#include <string.h>

static const int64_t ReservedAction = -1;

static int append_next_action(sd_bus_message *reply, sqlite3_stmt *selection)
{
    struct action action;
    if (!step_action(selection, &action))
        return 0;
    const int result = append_action(reply, &action);
    return result < 0 ? result : 1;
}

static int reply_actions(sd_bus_message *call, sqlite3_stmt *selection)
{
    return reply_rows(call, "(" ACTION ")", selection, append_next_action);
}

int get_all_actions(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    return reply_actions(call, select_all_actions());
}

int get_action(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idAction = 0;
    const int result = sd_bus_message_read(call, "x", &idAction);
    return result < 0 ? result : reply_actions(call, select_action(idAction));
}

int add_action(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct action action;
    const int result = read_action(call, &action);
    if (result < 0)
        return result;
    const int code = insert_action(&action);
    if (code != StoreOk)
        return sd_bus_reply_method_return(call, "x", (int64_t)code);
    send_action_event(sd_bus_message_get_bus(call), "ACTION_CREATE_NTF", &action);
    return sd_bus_reply_method_return(call, "x", action.idAction);
}

static void show_label(sd_bus *bus, int64_t idAction, const char *label)
{
    struct key key;
    sqlite3_stmt *const selection = select_keys_of_type_with_action(ModuleKey, idAction);
    while (step_module_key(selection, &key))
        send_module_label(bus, &key, 1, label);
    sqlite3_reset(selection);
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
    const int code = update_action(action);
    if (code != StoreOk)
        return code;
    send_action_event(bus, "ACTION_MODIFY_NTF", action);
    if (!is_same_label)
        show_label(bus, action->idAction, action->shortLabel);
    return StoreOk;
}

int modify_action(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct action action;
    const int result = read_action(call, &action);
    if (result < 0)
        return result;
    return sd_bus_reply_method_return(call, "i",
                                      change_action(sd_bus_message_get_bus(call), &action));
}

static bool is_removable(int64_t idAction)
{
    struct action action;
    sqlite3_stmt *const selection = select_action(idAction);
    const bool removable =
        idAction != ReservedAction && step_action(selection, &action) && *action.dmId == '\0';
    sqlite3_reset(selection);
    return removable;
}

// All ids are read before the first key goes.
static void remove_keys_with_action(sd_bus *bus, int64_t idAction)
{
    sqlite3_stmt *const selection = select_key_ids_with_action(idAction);
    int64_t *ids = NULL;
    size_t count = 0;
    while (sqlite3_step(selection) == SQLITE_ROW) {
        int64_t *const more = realloc(ids, (count + 1) * sizeof *ids);
        if (!more)
            break;
        ids = more;
        ids[count++] = sqlite3_column_int64(selection, 0);
    }
    sqlite3_reset(selection);
    for (size_t i = 0; i < count; ++i)
        remove_key_by_id(bus, ids[i]);
    free(ids);
}

static int remove_action_by_id(sd_bus *bus, int64_t idAction)
{
    if (!is_removable(idAction))
        return Refused;
    const int code = delete_action(idAction);
    if (code != StoreOk)
        return code;
    remove_keys_with_action(bus, idAction);
    send_id_event(bus, "ACTION_DELETE_NTF", "idAction", idAction);
    return StoreOk;
}

int remove_action(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idAction = 0;
    const int result = sd_bus_message_read(call, "x", &idAction);
    if (result < 0)
        return result;
    return sd_bus_reply_method_return(call, "i",
                                      remove_action_by_id(sd_bus_message_get_bus(call), idAction));
}
