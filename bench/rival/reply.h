#pragma once

#include <sqlite3.h>
#include <systemd/sd-bus.h>

/// Appends the next row of a selection: 1, or 0 if there is none, or a negative errno.
typedef int (*append_row)(sd_bus_message *reply, sqlite3_stmt *selection);

/// Answers a call with all rows of a selection, as an array of structures of that type.
int reply_rows(sd_bus_message *call, const char *type, sqlite3_stmt *selection, append_row append);
