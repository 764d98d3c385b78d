#pragma once

#include "wire/records.h"

/// The events of the service.
void send_key_created(sd_bus *bus, const struct key *key);
void send_key_deleted(sd_bus *bus, int64_t idKey);
void send_keys_full(sd_bus *bus);
void send_action_modified(sd_bus *bus, const struct action *action);
void send_press(sd_bus *bus, const struct key *key, const struct action *action);
