#pragma once

#include "client/ProgrammableKeys.h"
#include "outcome/Failure.h"

/// Error messages for the result codes of the service. The service does not give a reason, so the
/// likely one is looked up afterwards. `what` begins a message, such as "Key 3 was not changed".
namespace commands {

/// The noun is "key" or "action".
Failure noSuchRecord(const QString &noun, qlonglong id);

/// The action of a key does not exist.
Failure missingAction(const QString &what, qlonglong idAction);

/// Why a key or an action was not created or changed.
Failure writeRefused(const client::ProgrammableKeys &service, const Key &key, const QString &what,
                     qlonglong code);
Failure writeRefused(const client::ProgrammableKeys &service, const Action &action,
                     const QString &what, qlonglong code);

/// Why a key or an action was not deleted.
Failure deletionRefused(const Key &key, qlonglong code);
Failure deletionRefused(const Action &action, qlonglong code);

} // namespace commands
