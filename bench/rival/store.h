#pragma once

#include "wire/records.h"

#include <sqlite3.h>

#include <stdbool.h>
#include <stdint.h>

enum { StoreOk = 0, StoreNoSuchRow = -2, StoreFailed = -3 };

/// Opens the database below `root`, creates missing tables, and prepares all statements.
void store_open(const char *root);

/// Read a selection row by row: call its step function until it returns false, and then reset it.
/// The texts of a row are valid until the next step.
sqlite3_stmt *select_key(int64_t idKey);
sqlite3_stmt *select_all_keys(void);
sqlite3_stmt *select_module_keys_at(int type, int position, int aom_type, int aom_addr);
sqlite3_stmt *select_action(int64_t idAction);
bool step_key(sqlite3_stmt *selection, struct key *key);
bool step_module_key(sqlite3_stmt *selection, struct key *key);
bool step_action(sqlite3_stmt *selection, struct action *action);

int count_keys_of_type(int type);
int insert_key(struct key *key);
int delete_key(int64_t idKey);
int update_action(const struct action *action);
