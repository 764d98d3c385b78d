#pragma once

/// The statements that create and check the two tables. Their spacing is part of the file format,
/// because SQLite stores them in `sqlite_master`.
namespace schema {

constexpr const char *DropKeys = "DROP TABLE IF EXISTS KEY";
constexpr const char *DropActions = "DROP TABLE IF EXISTS ACTION";

constexpr const char *CreateKeys =
    "CREATE TABLE IF NOT EXISTS KEY (idKey     INTEGER PRIMARY KEY AUTOINCREMENT, "
    "container VARCHAR,idAction  BIGINT,position  INTEGER,icon      VARCHAR,type      INTEGER,"
    "aom_type  INTEGER,aom_addr  INTEGER,dmId  VARCHAR)";

constexpr const char *CreateActions =
    "CREATE TABLE IF NOT EXISTS ACTION (idAction   INTEGER PRIMARY KEY AUTOINCREMENT,"
    "type       INTEGER,action     VARCHAR,webAppName VARCHAR,arguments  VARCHAR,"
    "label      VARCHAR,shortLabel VARCHAR,dmId VARCHAR)";

constexpr const char *InsertReservedAction =
    "INSERT INTO ACTION (idAction, type, action, webAppName, arguments, label, shortLabel, dmId) "
    "VALUES (-1, -1, '', '', '', '', '', '')";

constexpr const char *ProbeKeys =
    "SELECT idKey, container, idAction, position, icon, type, aom_type, aom_addr, dmId "
    "FROM Key LIMIT 1";

constexpr const char *ProbeActions =
    "SELECT idAction, type, action, webAppName, arguments, label, shortLabel, dmId "
    "FROM Action LIMIT 1";

} // namespace schema
