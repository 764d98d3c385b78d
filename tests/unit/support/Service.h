#pragma once

#include "app/ZelProgrammableKeys.h"
#include "storage/ProgKeysDatabase.h"
#include "support/Samples.h"

namespace unit {

/// The one module of this process.
inline ZelProgrammableKeys &service()
{
    return *ZelProgrammableKeys::instance();
}

/// Empty tables and known types, as after a start.
inline void layService()
{
    registerDBusKey();
    registerDBusAction();
    ProgKeysDatabase::instance().resetTables();
}

/// Stores without any event or rule, and returns the record as it is stored.
inline Key stored(Key key)
{
    key.idKey = ProgKeysDatabase::instance().insertKey(key).id;
    return key;
}

inline Action stored(Action action)
{
    action.idAction = ProgKeysDatabase::instance().insertAction(action).id;
    return action;
}

} // namespace unit
