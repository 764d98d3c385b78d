#include "store.h"

#include "wire/fail.h"

#include <stdio.h>
#include <sys/stat.h>

#define KEY_COLUMNS "idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId"

enum statement {
    SelectKey,
    SelectAllKeys,
    SelectKeysAtPlace,
    CountKeysOfType,
    InsertKey,
    DeleteKey,
    SelectAction,
    UpdateAction,
    StatementCount
};

static const char *const Schema =
    "CREATE TABLE IF NOT EXISTS KEY (idKey     INTEGER PRIMARY KEY AUTOINCREMENT, "
    "container VARCHAR,idAction  BIGINT,position  INTEGER,icon      VARCHAR,type      INTEGER,"
    "aom_type  INTEGER,aom_addr  INTEGER,dmId  VARCHAR);"
    "CREATE TABLE IF NOT EXISTS ACTION (idAction   INTEGER PRIMARY KEY AUTOINCREMENT,"
    "type       INTEGER,action     VARCHAR,webAppName VARCHAR,arguments  VARCHAR,"
    "label      VARCHAR,shortLabel VARCHAR,dmId VARCHAR);"
    "INSERT OR IGNORE INTO ACTION (idAction, type, action, webAppName, arguments, label, "
    "shortLabel, dmId) VALUES (-1, -1, '', '', '', '', '', '')";

// The same texts as those of the service.
static const char *const Texts[StatementCount] = {
    [SelectKey] = "SELECT " KEY_COLUMNS " FROM KEY WHERE idKey=?",
    [SelectAllKeys] = "SELECT " KEY_COLUMNS " FROM KEY",
    [SelectKeysAtPlace] = "SELECT idKey, DMID, container, idAction, position, icon, type, "
                          "aom_type, aom_addr FROM KEY "
                          "WHERE type=? and position=? and aom_type=? and aom_addr=?",
    [CountKeysOfType] = "SELECT COUNT(*) FROM KEY WHERE type=?",
    [InsertKey] = "INSERT INTO KEY (container, idAction, position, icon, type, aom_type, aom_addr, "
                  "dmId) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
    [DeleteKey] = "DELETE FROM KEY WHERE idKey=?",
    [SelectAction] = "SELECT idAction, DMID, type, action, webAppName, arguments, label, "
                     "shortLabel, dmId FROM ACTION WHERE idAction=?",
    [UpdateAction] = "UPDATE ACTION SET type=?, action=?, webAppName=?, arguments=?, label=?, "
                     "shortLabel=?, dmId=? WHERE idAction=?",
};

static sqlite3 *database;

static sqlite3_stmt *statements[StatementCount];

void store_open(const char *root)
{
    char path[4096];
    snprintf(path, sizeof path, "%s/ZelProgrammableKeys", root);
    mkdir(path, 0777);
    snprintf(path, sizeof path, "%s/ZelProgrammableKeys/zelprogrammablekeys.data", root);
    // There is only one thread, so no mutexes are necessary.
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(path, &database, flags, NULL) != SQLITE_OK ||
        sqlite3_busy_timeout(database, 5000) != SQLITE_OK ||
        sqlite3_exec(database, Schema, NULL, NULL, NULL) != SQLITE_OK)
        fail(path, sqlite3_errmsg(database));
    for (int i = 0; i < StatementCount; ++i)
        if (sqlite3_prepare_v3(database, Texts[i], -1, SQLITE_PREPARE_PERSISTENT, &statements[i],
                               NULL) != SQLITE_OK)
            fail(Texts[i], sqlite3_errmsg(database));
}

// Bound texts stay valid until their statement has run, so SQLite does not copy them.
static void bind_text(sqlite3_stmt *statement, int index, const char *text)
{
    sqlite3_bind_text(statement, index, text, -1, SQLITE_STATIC);
}

static sqlite3_stmt *select_by_id(enum statement statement, int64_t id)
{
    sqlite3_bind_int64(statements[statement], 1, id);
    return statements[statement];
}

sqlite3_stmt *select_key(int64_t idKey)
{
    return select_by_id(SelectKey, idKey);
}

sqlite3_stmt *select_all_keys(void)
{
    return statements[SelectAllKeys];
}

sqlite3_stmt *select_module_keys_at(int type, int position, int aom_type, int aom_addr)
{
    sqlite3_stmt *const selection = statements[SelectKeysAtPlace];
    sqlite3_bind_int(selection, 1, type);
    sqlite3_bind_int(selection, 2, position);
    sqlite3_bind_int(selection, 3, aom_type);
    sqlite3_bind_int(selection, 4, aom_addr);
    return selection;
}

sqlite3_stmt *select_action(int64_t idAction)
{
    return select_by_id(SelectAction, idAction);
}

static const char *text_at(sqlite3_stmt *row, int column)
{
    const unsigned char *const text = sqlite3_column_text(row, column);
    return text ? (const char *)text : "";
}

bool step_key(sqlite3_stmt *selection, struct key *key)
{
    if (sqlite3_step(selection) != SQLITE_ROW)
        return false;
    *key = (struct key){.idKey = sqlite3_column_int64(selection, 0),
                        .container = text_at(selection, 1),
                        .idAction = sqlite3_column_int64(selection, 2),
                        .position = sqlite3_column_int(selection, 3),
                        .icon = text_at(selection, 4),
                        .type = sqlite3_column_int(selection, 5),
                        .aom_type = sqlite3_column_int(selection, 6),
                        .aom_addr = sqlite3_column_int(selection, 7),
                        .dmId = text_at(selection, 8)};
    return true;
}

bool step_module_key(sqlite3_stmt *selection, struct key *key)
{
    if (sqlite3_step(selection) != SQLITE_ROW)
        return false;
    *key = (struct key){.idKey = sqlite3_column_int64(selection, 0),
                        .dmId = text_at(selection, 1),
                        .container = text_at(selection, 2),
                        .idAction = sqlite3_column_int64(selection, 3),
                        .position = sqlite3_column_int(selection, 4),
                        .icon = text_at(selection, 5),
                        .type = sqlite3_column_int(selection, 6),
                        .aom_type = sqlite3_column_int(selection, 7),
                        .aom_addr = sqlite3_column_int(selection, 8)};
    return true;
}

bool step_action(sqlite3_stmt *selection, struct action *action)
{
    if (sqlite3_step(selection) != SQLITE_ROW)
        return false;
    *action = (struct action){.idAction = sqlite3_column_int64(selection, 0),
                              .dmId = text_at(selection, 1),
                              .type = sqlite3_column_int(selection, 2),
                              .action = text_at(selection, 3),
                              .webAppName = text_at(selection, 4),
                              .arguments = text_at(selection, 5),
                              .label = text_at(selection, 6),
                              .shortLabel = text_at(selection, 7)};
    return true;
}

// Runs a statement that returns no rows.
static int run(sqlite3_stmt *statement)
{
    const int result = sqlite3_step(statement);
    const int reset = sqlite3_reset(statement);
    return result == SQLITE_DONE && reset == SQLITE_OK ? StoreOk : StoreFailed;
}

static int change(sqlite3_stmt *statement)
{
    const int result = run(statement);
    if (result != StoreOk)
        return result;
    return sqlite3_changes(database) == 0 ? StoreNoSuchRow : StoreOk;
}

int count_keys_of_type(int type)
{
    sqlite3_stmt *const count = statements[CountKeysOfType];
    sqlite3_bind_int(count, 1, type);
    const int result = sqlite3_step(count) == SQLITE_ROW ? sqlite3_column_int(count, 0) : 0;
    sqlite3_reset(count);
    return result;
}

int insert_key(struct key *key)
{
    sqlite3_stmt *const statement = statements[InsertKey];
    bind_text(statement, 1, key->container);
    sqlite3_bind_int64(statement, 2, key->idAction);
    sqlite3_bind_int(statement, 3, key->position);
    bind_text(statement, 4, key->icon);
    sqlite3_bind_int(statement, 5, key->type);
    sqlite3_bind_int(statement, 6, key->aom_type);
    sqlite3_bind_int(statement, 7, key->aom_addr);
    bind_text(statement, 8, key->dmId);
    const int result = run(statement);
    key->idKey = result == StoreOk ? sqlite3_last_insert_rowid(database) : -1;
    return result;
}

int delete_key(int64_t idKey)
{
    sqlite3_bind_int64(statements[DeleteKey], 1, idKey);
    return change(statements[DeleteKey]);
}

int update_action(const struct action *action)
{
    sqlite3_stmt *const statement = statements[UpdateAction];
    sqlite3_bind_int(statement, 1, action->type);
    bind_text(statement, 2, action->action);
    bind_text(statement, 3, action->webAppName);
    bind_text(statement, 4, action->arguments);
    bind_text(statement, 5, action->label);
    bind_text(statement, 6, action->shortLabel);
    bind_text(statement, 7, action->dmId);
    sqlite3_bind_int64(statement, 8, action->idAction);
    return change(statement);
}
