#pragma once

#include <systemd/sd-bus.h>

#include <stdbool.h>

/// Reads a setting from the SettingsManager as a number; false if it cannot be read.
bool read_setting(sd_bus *bus, const char *name, int *value);
