#include "events.h"
#include "operations.h"
#include "reply.h"
#include "settings.h"
#include "store.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>

static int append_next_key(sd_bus_message *reply, sqlite3_stmt *selection)
{
    struct key key;
    if (!step_key(selection, &key))
        return 0;
    const int result = append_key(reply, &key);
    return result < 0 ? result : 1;
}

static int reply_keys(sd_bus_message *call, sqlite3_stmt *selection)
{
    return reply_rows(call, "(" KEY ")", selection, append_next_key);
}

int get_all_keys(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    return reply_keys(call, select_all_keys());
}

int get_keys_by_container(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    const char *container = NULL;
    const int result = sd_bus_message_read(call, "s", &container);
    return result < 0 ? result : reply_keys(call, select_keys_in_container(container));
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

static bool is_room_for(sd_bus *bus, const struct key *key)
{
    int limit = 0;
    const bool is_limited = read_setting(bus, "ProgKeysMax", &limit);
    return key->type != SetKey || !is_limited || count_keys_of_type(SetKey) < limit;
}

static int64_t make_key(sd_bus *bus, struct key *key)
{
    if (!action_exists(key->idAction))
        return Refused;
    if (!is_room_for(bus, key)) {
        send_bare_event(bus, "KO_PROGKEYS_DB_FULL");
        return KeysFull;
    }
    if (insert_key(key) != StoreOk)
        return Refused;
    send_key_event(bus, "KEY_CREATE_NTF", key);
    if (key->type == ModuleKey)
        send_module_icon(bus, key, 0, 0);
    return key->idKey;
}

int create_key(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct key key;
    const int result = read_key(call, &key);
    if (result < 0)
        return result;
    return sd_bus_reply_method_return(call, "x", make_key(sd_bus_message_get_bus(call), &key));
}

static bool has_icon(int64_t idKey, const char *icon)
{
    struct key old = {.icon = ""};
    sqlite3_stmt *const selection = select_key(idKey);
    step_key(selection, &old);
    const bool is_same = strcmp(old.icon, icon) == 0;
    sqlite3_reset(selection);
    return is_same;
}

static int change_key(sd_bus *bus, const struct key *key)
{
    const bool is_same_icon = has_icon(key->idKey, key->icon);
    if (!action_exists(key->idAction))
        return Refused;
    const int code = update_key(key);
    if (code != StoreOk)
        return code;
    send_key_event(bus, "KEY_MODIFY_NTF", key);
    if (key->type == ModuleKey && !is_same_icon)
        send_module_icon(bus, key, 0, 0);
    return StoreOk;
}

int modify_key(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct key key;
    const int result = read_key(call, &key);
    if (result < 0)
        return result;
    return sd_bus_reply_method_return(call, "i", change_key(sd_bus_message_get_bus(call), &key));
}

struct move
{
    int32_t idKey;
    int32_t position;
};

// In ascending order; of a key that is named more than once, the last place counts.
static size_t add_move(struct move *moves, size_t count, struct move move)
{
    size_t at = count;
    while (at > 0 && moves[at - 1].idKey >= move.idKey)
        --at;
    const bool is_known = at < count && moves[at].idKey == move.idKey;
    if (!is_known)
        memmove(moves + at + 1, moves + at, (count - at) * sizeof *moves);
    moves[at] = move;
    return is_known ? count : count + 1;
}

static int read_moves(sd_bus_message *call, struct move **moves, size_t *count)
{
    struct move move;
    int result = sd_bus_message_enter_container(call, 'a', "{ii}");
    while (result >= 0 &&
           (result = sd_bus_message_read(call, "{ii}", &move.idKey, &move.position)) > 0) {
        struct move *const more = realloc(*moves, (*count + 1) * sizeof **moves);
        if (!more)
            return -ENOMEM;
        *moves = more;
        *count = add_move(*moves, *count, move);
    }
    return result;
}

int change_positions(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct move *moves = NULL;
    size_t count = 0;
    bool is_done = true;
    const int result = read_moves(call, &moves, &count);
    for (size_t i = 0; result >= 0 && is_done && i < count; ++i)
        is_done = update_position(moves[i].idKey, moves[i].position) != StoreFailed;
    free(moves);
    return result < 0 ? result : sd_bus_reply_method_return(call, "b", (int)is_done);
}

static bool is_removable(int64_t idKey)
{
    struct key key;
    sqlite3_stmt *const selection = select_key(idKey);
    const bool removable = step_key(selection, &key) && *key.dmId == '\0';
    sqlite3_reset(selection);
    return removable;
}

int remove_key_by_id(sd_bus *bus, int64_t idKey)
{
    if (!is_removable(idKey))
        return Refused;
    const int code = delete_key(idKey);
    if (code == StoreOk)
        send_id_event(bus, "KEY_DELETE_NTF", "idKey", idKey);
    return code;
}

int remove_key(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idKey = 0;
    const int result = sd_bus_message_read(call, "x", &idKey);
    if (result < 0)
        return result;
    return sd_bus_reply_method_return(call, "i",
                                      remove_key_by_id(sd_bus_message_get_bus(call), idKey));
}
