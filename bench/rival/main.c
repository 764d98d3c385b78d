// The rival: the operations of the benchmarks, written directly with sd-bus and SQLite. It executes
// the same statements, sends the same events and reads the same setting as the service, without a
// framework, a lifecycle, provisioning or a log.

#include "operations.h"
#include "store.h"
#include "wire/fail.h"
#include "wire/names.h"
#include "wire/records.h"

#include <stdint.h>
#include <stdlib.h>

// Without this flag, the library asks the bus for the caller's credentials at each call.
#define METHOD(name, in, out, handler)                                                             \
    SD_BUS_METHOD(name, in, out, handler, SD_BUS_VTABLE_UNPRIVILEGED)

static const sd_bus_vtable Operations[] = {
    SD_BUS_VTABLE_START(0),
    METHOD("getAllProgrammableKeys", "", "a(" KEY ")", get_all_keys),
    METHOD("getProgrammableKey", "x", "a(" KEY ")", get_key),
    METHOD("createProgrammableKey", "(" KEY ")", "x", create_key),
    METHOD("deleteProgrammableKey", "x", "i", remove_key),
    METHOD("getAction", "x", "a(" ACTION ")", get_action),
    METHOD("modifyAction", "(" ACTION ")", "i", modify_action),
    SD_BUS_VTABLE_END,
};

int main(void)
{
    const char *const root = getenv("ZEL_DATA_ROOT");
    if (!root)
        fail("ZEL_DATA_ROOT", "not set");
    store_open(root);
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
        if (check(sd_bus_process(bus, NULL), "the bus") == 0)
            check(sd_bus_wait(bus, UINT64_MAX), "the bus");
    }
}
