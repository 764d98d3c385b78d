// The same service by hand, on libsystemd's bus and SQLite's own interface: no framework, no
// lifecycle, no defaults, no log.

#include "fail.h"
#include "operations.h"
#include "store.h"
#include "wire/names.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

// Whoever the bus lets through may call; the library would otherwise ask the bus who it is, each
// time.
#define METHOD(name, in, out, handler)                                                             \
    SD_BUS_METHOD(name, in, out, handler, SD_BUS_VTABLE_UNPRIVILEGED)

static const sd_bus_vtable Operations[] = {
    SD_BUS_VTABLE_START(0),
    METHOD("getAllProgrammableKeys", "", "a(" KEY ")", get_all_keys),
    METHOD("getProgrammableKeysByContainer", "s", "a(" KEY ")", get_keys_by_container),
    METHOD("createProgrammableKey", "(" KEY ")", "x", create_key),
    METHOD("modifyProgrammableKey", "(" KEY ")", "i", modify_key),
    METHOD("changeProgrammableKeysPosition", "a{ii}", "b", change_positions),
    METHOD("deleteProgrammableKey", "x", "i", remove_key),
    METHOD("getProgrammableKey", "x", "a(" KEY ")", get_key),
    METHOD("getAllActions", "", "a(" ACTION ")", get_all_actions),
    METHOD("addAction", "(" ACTION ")", "x", add_action),
    METHOD("modifyAction", "(" ACTION ")", "i", modify_action),
    METHOD("deleteAction", "x", "i", remove_action),
    METHOD("getAction", "x", "a(" ACTION ")", get_action),
    METHOD("setIconStateForKey", "xii", "i", set_icon_state),
    METHOD("setLabelStateForKey", "xi", "i", set_label_state),
    SD_BUS_VTABLE_END,
};

static void check(int result, const char *what)
{
    if (result < 0)
        fail(what, strerror(-result));
}

int main(void)
{
    const char *const root = getenv("ZEL_DATA_ROOT");
    store_open(root ? root : "/data/ZELApplication");
    sd_bus *bus = NULL;
    check(sd_bus_open_system(&bus), "the bus");
    check(sd_bus_add_object_vtable(bus, NULL, SERVICE_PATH, OPERATIONS, Operations, NULL),
          SERVICE_PATH);
    check(sd_bus_add_match(bus, NULL,
                           "type='signal',interface='" EVENTS "',member='" EVENT
                           "',arg0='AOM_KEY_PRESS_EVENT'",
                           key_pressed, NULL),
          "AOM_KEY_PRESS_EVENT");
    check(sd_bus_request_name(bus, SERVICE, 0), SERVICE);
    for (;;) {
        const int progress = sd_bus_process(bus, NULL);
        check(progress, "the bus");
        if (progress == 0)
            check(sd_bus_wait(bus, UINT64_MAX), "the bus");
    }
}
