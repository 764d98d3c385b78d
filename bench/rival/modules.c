#include "events.h"
#include "operations.h"
#include "store.h"

#include <errno.h>
#include <string.h>

static const int SettableModule = 1;
static const struct action NoAction = {-1, "", 0, "", "", "", "", ""};

enum { AomKeyNum, AomType, Addr, FieldCount };

static const char *const Fields[FieldCount] = {"aom_key_num", "aom_type", "addr"};

struct place
{
    int32_t values[FieldCount];
    bool is_known[FieldCount];
};

static int find_field(const char *name)
{
    int field = 0;
    while (field < FieldCount && strcmp(name, Fields[field]) != 0)
        ++field;
    return field;
}

// Any whole number of the bus within 32 bits will do.
static bool read_number(sd_bus_message *event, int32_t *number)
{
    const char *contents = NULL;
    int64_t value = INT64_MAX;
    union {
        uint8_t y;
        int16_t n;
        uint16_t q;
        int32_t i;
        uint32_t u;
        int64_t x;
    } read;
    if (sd_bus_message_peek_type(event, NULL, &contents) <= 0 || strlen(contents) != 1 ||
        !strchr("ynqiux", *contents) || sd_bus_message_read(event, "v", contents, &read) < 0)
        return false;
    switch (*contents) {
    case 'y':
        value = read.y;
        break;
    case 'n':
        value = read.n;
        break;
    case 'q':
        value = read.q;
        break;
    case 'i':
        value = read.i;
        break;
    case 'u':
        value = read.u;
        break;
    default:
        value = read.x;
    }
    *number = (int32_t)value;
    return value == *number;
}

// Reads one argument; of several with the same name the first counts, and those that no key is
// placed by are passed over.
static int read_argument(sd_bus_message *event, struct place *place)
{
    const char *name = NULL;
    int result = sd_bus_message_read(event, "s", &name);
    if (result < 0)
        return result;
    const int field = find_field(name);
    if (field == FieldCount || place->is_known[field])
        result = sd_bus_message_skip(event, "v");
    else if (!read_number(event, &place->values[field]))
        result = -EBADMSG;
    else
        place->is_known[field] = true;
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

static void report_press(sd_bus *bus, const struct key *key)
{
    struct action action;
    sqlite3_stmt *const selection = select_action(key->idAction);
    const bool exists = step_action(selection, &action);
    send_press(bus, key, exists ? &action : &NoAction, true);
    sqlite3_reset(selection);
}

int key_pressed(sd_bus_message *event, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    struct place place = {0};
    if (!read_place(event, &place))
        return 0;
    sd_bus *const bus = sd_bus_message_get_bus(event);
    struct key key;
    sqlite3_stmt *const selection = select_keys_at_place(ModuleKey, place.values[AomKeyNum],
                                                         place.values[AomType], place.values[Addr]);
    if (step_module_key(selection, &key)) {
        report_press(bus, &key);
    } else {
        key = (struct key){.idKey = -1,
                           .dmId = "",
                           .idAction = -1,
                           .container = "",
                           .position = place.values[AomKeyNum],
                           .icon = "",
                           .type = ModuleKey,
                           .aom_type = place.values[AomType],
                           .aom_addr = place.values[Addr]};
        send_press(bus, &key, &NoAction, false);
    }
    sqlite3_reset(selection);
    return 0;
}

int set_icon_state(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idKey = 0;
    int32_t icon_x = 0;
    int32_t icon_y = 0;
    const int result = sd_bus_message_read(call, "xii", &idKey, &icon_x, &icon_y);
    if (result < 0)
        return result;
    struct key key;
    sqlite3_stmt *const selection = select_key(idKey);
    const bool is_settable = step_key(selection, &key) && key.aom_type == SettableModule;
    if (is_settable)
        send_module_icon(sd_bus_message_get_bus(call), &key, icon_x, icon_y);
    sqlite3_reset(selection);
    return sd_bus_reply_method_return(call, "i", is_settable ? StoreOk : Refused);
}

static int show_label(sd_bus *bus, const struct key *key, int state)
{
    struct action action;
    sqlite3_stmt *const selection = select_action(key->idAction);
    const bool exists = step_action(selection, &action);
    if (exists)
        send_module_label(bus, key, state, action.shortLabel);
    sqlite3_reset(selection);
    return exists ? StoreOk : Refused;
}

int set_label_state(sd_bus_message *call, void *data, sd_bus_error *error)
{
    (void)data, (void)error;
    int64_t idKey = 0;
    int32_t state = 0;
    int code = Refused;
    const int result = sd_bus_message_read(call, "xi", &idKey, &state);
    if (result < 0)
        return result;
    struct key key;
    sqlite3_stmt *const selection = select_key(idKey);
    if (step_key(selection, &key) && key.aom_type == SettableModule)
        code = show_label(sd_bus_message_get_bus(call), &key, state);
    sqlite3_reset(selection);
    return sd_bus_reply_method_return(call, "i", code);
}
