#include "events.h"
#include "operations.h"
#include "store.h"

#include <errno.h>
#include <string.h>

enum { AomKeyNum, AomType, Addr, FieldCount };

static const char *const Fields[FieldCount] = {"aom_key_num", "aom_type", "addr"};

struct place
{
    int32_t values[FieldCount];
    bool is_known[FieldCount];
};

// Reads an argument. The first of several arguments with the same name counts. Other names are
// ignored.
static int read_argument(sd_bus_message *event, struct place *place)
{
    const char *name = NULL;
    int field = 0;
    int result = sd_bus_message_read(event, "s", &name);
    if (result < 0)
        return result;
    while (field < FieldCount && strcmp(name, Fields[field]) != 0)
        ++field;
    if (field == FieldCount || place->is_known[field])
        return sd_bus_message_skip(event, "vb");
    place->is_known[field] = true;
    result = sd_bus_message_read(event, "v", "i", &place->values[field]);
    return result < 0 ? result : sd_bus_message_skip(event, "b");
}

static bool read_place(sd_bus_message *event, struct place *place)
{
    int result =
        sd_bus_message_has_signature(event, "sa(svb)") ? sd_bus_message_skip(event, "s") : -EBADMSG;
    if (result >= 0)
        result = sd_bus_message_enter_container(event, 'a', "(svb)");
    while (result >= 0 && (result = sd_bus_message_enter_container(event, 'r', "svb")) > 0) {
        result = read_argument(event, place);
        if (result >= 0)
            result = sd_bus_message_exit_container(event);
    }
    return result >= 0 && place->is_known[AomKeyNum] && place->is_known[AomType] &&
           place->is_known[Addr];
}

// The client presses only stored keys with stored actions. Other presses are ignored.
int key_pressed(sd_bus_message *event, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct place place = {0};
    if (!read_place(event, &place))
        return 0;
    struct key key;
    struct action action;
    sqlite3_stmt *const keys = select_module_keys_at(ModuleKey, place.values[AomKeyNum],
                                                     place.values[AomType], place.values[Addr]);
    if (step_module_key(keys, &key)) {
        sqlite3_stmt *const actions = select_action(key.idAction);
        if (step_action(actions, &action))
            send_press(sd_bus_message_get_bus(event), &key, &action);
        sqlite3_reset(actions);
    }
    sqlite3_reset(keys);
    return 0;
}
