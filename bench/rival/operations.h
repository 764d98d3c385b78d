#pragma once

#include <systemd/sd-bus.h>

enum { Refused = -2, KeysFull = -1 };

enum { SetKey = 0, ModuleKey = 1 };

/// The bus methods.
int get_all_keys(sd_bus_message *call, void *data, sd_bus_error *error);
int get_key(sd_bus_message *call, void *data, sd_bus_error *error);
int create_key(sd_bus_message *call, void *data, sd_bus_error *error);
int remove_key(sd_bus_message *call, void *data, sd_bus_error *error);
int get_action(sd_bus_message *call, void *data, sd_bus_error *error);
int modify_action(sd_bus_message *call, void *data, sd_bus_error *error);

/// Handles AOM_KEY_PRESS_EVENT.
int key_pressed(sd_bus_message *event, void *data, sd_bus_error *error);
