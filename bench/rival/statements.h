#pragma once

/// The texts of all statements, the same as the service's.
enum statement {
    SelectKey,
    SelectKeysInContainer,
    SelectAllKeys,
    SelectKeysOfTypeWithAction,
    SelectKeysAtPlace,
    SelectKeyIdsWithAction,
    CountKeysOfType,
    InsertKey,
    UpdateKey,
    UpdatePosition,
    DeleteKey,
    SelectAction,
    SelectAllActions,
    InsertAction,
    UpdateAction,
    DeleteAction,
    StatementCount
};

extern const char *const Texts[StatementCount];

/// Makes the tables where they are missing.
extern const char *const Schema;
