#pragma once

#include "wire/records.h"

#include <sqlite3.h>

#include <stdbool.h>
#include <stdint.h>

/// The tables, and every statement on them, prepared once. SQLite's default journal.
void store_open(const char *root);

enum { StoreOk = 0, StoreNoSuchRow = -2, StoreFailed = -3 };

/// Selections are read row by row: begin one, step while there are rows, then reset it. Texts of a
/// row live until the next step.
sqlite3_stmt *select_key(int64_t idKey);
sqlite3_stmt *select_keys_in_container(const char *container);
sqlite3_stmt *select_all_keys(void);
sqlite3_stmt *select_keys_of_type_with_action(int type, int64_t idAction);
sqlite3_stmt *select_keys_at_place(int type, int position, int aom_type, int aom_addr);
sqlite3_stmt *select_key_ids_with_action(int64_t idAction);
sqlite3_stmt *select_action(int64_t idAction);
sqlite3_stmt *select_all_actions(void);
bool step_key(sqlite3_stmt *selection, struct key *key);
bool step_module_key(sqlite3_stmt *selection, struct key *key);
bool step_action(sqlite3_stmt *selection, struct action *action);

int count_keys_of_type(int type);
int insert_key(struct key *key);
int update_key(const struct key *key);
int update_position(int64_t idKey, int position);
int delete_key(int64_t idKey);
int insert_action(struct action *action);
int update_action(const struct action *action);
int delete_action(int64_t idAction);
