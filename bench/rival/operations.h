#pragma once

#include <systemd/sd-bus.h>

/// What the service's operations answer when they refuse.
enum { Refused = -2, KeysFull = -1 };

enum { SetKey = 0, ModuleKey = 1 };

/// One bus method each.
int get_all_keys(sd_bus_message *call, void *data, sd_bus_error *error);
int get_keys_by_container(sd_bus_message *call, void *data, sd_bus_error *error);
int get_key(sd_bus_message *call, void *data, sd_bus_error *error);
int create_key(sd_bus_message *call, void *data, sd_bus_error *error);
int modify_key(sd_bus_message *call, void *data, sd_bus_error *error);
int change_positions(sd_bus_message *call, void *data, sd_bus_error *error);
int remove_key(sd_bus_message *call, void *data, sd_bus_error *error);
int get_all_actions(sd_bus_message *call, void *data, sd_bus_error *error);
int get_action(sd_bus_message *call, void *data, sd_bus_error *error);
int add_action(sd_bus_message *call, void *data, sd_bus_error *error);
int modify_action(sd_bus_message *call, void *data, sd_bus_error *error);
int remove_action(sd_bus_message *call, void *data, sd_bus_error *error);
int set_icon_state(sd_bus_message *call, void *data, sd_bus_error *error);
int set_label_state(sd_bus_message *call, void *data, sd_bus_error *error);

/// AOM_KEY_PRESS_EVENT.
int key_pressed(sd_bus_message *event, void *data, sd_bus_error *error);

/// Deletes a key as `remove_key` does, and returns what that answers.
int remove_key_by_id(sd_bus *bus, int64_t idKey);
