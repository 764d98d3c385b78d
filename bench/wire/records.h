#pragma once

#include <systemd/sd-bus.h>

#include <stdint.h>

/// The signatures of keys and actions on the bus.
#define KEY "xsxsisiii"
#define ACTION "xsisssss"

/// The texts of a record that was read from a message belong to that message.
struct key
{
    int64_t idKey;
    const char *dmId;
    int64_t idAction;
    const char *container;
    int32_t position;
    const char *icon;
    int32_t type;
    int32_t aom_type;
    int32_t aom_addr;
};

struct action
{
    int64_t idAction;
    const char *dmId;
    int32_t type;
    const char *action;
    const char *webAppName;
    const char *arguments;
    const char *label;
    const char *shortLabel;
};

/// All return a negative errno on failure. Reading returns 0 at the end of an array.
int append_key(sd_bus_message *message, const struct key *key);
int append_action(sd_bus_message *message, const struct action *action);
int read_key(sd_bus_message *message, struct key *key);
int read_action(sd_bus_message *message, struct action *action);
