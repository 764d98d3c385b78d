#include "settings.h"

#include "wire/names.h"

#include <stdint.h>
#include <stdlib.h>

static const uint64_t LimitMicroseconds = UINT64_C(5) * 1000 * 1000;

static bool ask(sd_bus *bus, sd_bus_message *call, int *value)
{
    sd_bus_message *reply = NULL;
    const char *text = NULL;
    const bool is_read = sd_bus_call(bus, call, LimitMicroseconds, NULL, &reply) >= 0 &&
                         sd_bus_message_read(reply, "s", &text) > 0;
    if (is_read)
        *value = (int)strtol(text, NULL, 10);
    sd_bus_message_unref(reply);
    return is_read;
}

bool read_setting(sd_bus *bus, const char *name, int *value)
{
    sd_bus_message *call = NULL;
    const bool is_read = sd_bus_message_new_method_call(bus, &call, SETTINGS, SETTINGS_PATH,
                                                        OPERATIONS, "getSettingValue") >= 0 &&
                         sd_bus_message_append(call, "s", name) >= 0 && ask(bus, call, value);
    sd_bus_message_unref(call);
    return is_read;
}
