#pragma once

#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "module/ZelProgrammableKeys.h"
#include "records/ResultCode.h"
#include "storage/ProgKeysDatabase.h"
#include "support/Samples.h"

namespace unit {

/// The one module of this process.
inline ZelProgrammableKeys &service()
{
    const auto makeAdaptor = [](QObject *module) -> QDBusAbstractAdaptor * {
        return new ZelProgrammableKeysAdaptor(module);
    };
    return *ZelProgrammableKeys::instance(makeAdaptor);
}

/// The store of the module.
inline ProgKeysDatabase &database()
{
    return ProgKeysDatabase::instance(service());
}

/// Empty tables and known types, as after a start.
inline void resetService()
{
    registerDBusKey();
    registerDBusAction();
    database().resetTables();
}

/// The sender of the module's events.
inline Notifications notifications()
{
    return Notifications(service());
}

/// Stores without any event or rule, and returns the record as it is stored.
inline Key stored(Key key)
{
    key.idKey = database().insertKey(key).id;
    return key;
}

inline Action stored(Action action)
{
    action.idAction = database().insertAction(action).id;
    return action;
}

} // namespace unit
