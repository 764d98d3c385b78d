#pragma once

#include "wire/records.h"

#include <stdbool.h>

/// The events of the service. Those that carry a record or an id name it as listeners expect it.
void send_key_event(sd_bus *bus, const char *event, const struct key *key);
void send_action_event(sd_bus *bus, const char *event, const struct action *action);
void send_id_event(sd_bus *bus, const char *event, const char *argument, int64_t id);
void send_bare_event(sd_bus *bus, const char *event);
void send_module_icon(sd_bus *bus, const struct key *key, int icon_x, int icon_y);
void send_module_label(sd_bus *bus, const struct key *key, int state, const char *label);
void send_press(sd_bus *bus, const struct key *key, const struct action *action, bool exists);
