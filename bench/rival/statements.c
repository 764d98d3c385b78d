#include "statements.h"

#define KEY_COLUMNS "idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId"
#define MODULE_KEY_COLUMNS                                                                         \
    "idKey, DMID, container, idAction, position, icon, type, aom_type, aom_addr"

const char *const Schema =
    "CREATE TABLE IF NOT EXISTS KEY (idKey     INTEGER PRIMARY KEY AUTOINCREMENT, "
    "container VARCHAR,idAction  BIGINT,position  INTEGER,icon      VARCHAR,type      INTEGER,"
    "aom_type  INTEGER,aom_addr  INTEGER,dmId  VARCHAR);"
    "CREATE TABLE IF NOT EXISTS ACTION (idAction   INTEGER PRIMARY KEY AUTOINCREMENT,"
    "type       INTEGER,action     VARCHAR,webAppName VARCHAR,arguments  VARCHAR,"
    "label      VARCHAR,shortLabel VARCHAR,dmId VARCHAR);"
    "INSERT OR IGNORE INTO ACTION (idAction, type, action, webAppName, arguments, label, "
    "shortLabel, dmId) VALUES (-1, -1, '', '', '', '', '', '')";

const char *const Texts[StatementCount] = {
    [SelectKey] = "SELECT " KEY_COLUMNS " FROM KEY WHERE idKey=?",
    [SelectKeysInContainer] = "SELECT " KEY_COLUMNS " FROM KEY WHERE container=?",
    [SelectAllKeys] = "SELECT " KEY_COLUMNS " FROM KEY",
    [SelectKeysOfTypeWithAction] =
        "SELECT " MODULE_KEY_COLUMNS " FROM KEY WHERE type=? and idAction=?",
    [SelectKeysAtPlace] = "SELECT " MODULE_KEY_COLUMNS
                          " FROM KEY WHERE type=? and position=? and aom_type=? and aom_addr=?",
    [SelectKeyIdsWithAction] = "SELECT idKey FROM KEY WHERE idAction=?",
    [CountKeysOfType] = "SELECT COUNT(*) FROM KEY WHERE type=?",
    [InsertKey] = "INSERT INTO KEY (container, idAction, position, icon, type, aom_type, aom_addr, "
                  "dmId) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
    [UpdateKey] = "UPDATE KEY SET container=?, idAction=?, position=?, icon=?, type=?, aom_type=?, "
                  "aom_addr=?, dmId=? WHERE idKey=?",
    [UpdatePosition] = "UPDATE KEY SET position=? WHERE idKey=?",
    [DeleteKey] = "DELETE FROM KEY WHERE idKey=?",
    [SelectAction] = "SELECT idAction, DMID, type, action, webAppName, arguments, label, "
                     "shortLabel, dmId FROM ACTION WHERE idAction=?",
    [SelectAllActions] = "SELECT idAction, type, action, webAppName, arguments, label, shortLabel, "
                         "dmId FROM ACTION",
    [InsertAction] = "INSERT INTO ACTION (type, action, webAppName, arguments, label, shortLabel, "
                     "dmId) VALUES (?, ?, ?, ?, ?, ?, ?)",
    [UpdateAction] = "UPDATE ACTION SET type=?, action=?, webAppName=?, arguments=?, label=?, "
                     "shortLabel=?, dmId=? WHERE idAction=?",
    [DeleteAction] = "DELETE FROM ACTION WHERE idAction=?",
};
