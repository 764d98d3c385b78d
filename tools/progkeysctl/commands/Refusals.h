#pragma once

#include "client/ProgrammableKeys.h"
#include "outcome/Failure.h"

/// Error messages for the result codes of the service. The service does not give a reason, so the
/// likely one is looked up afterwards.
namespace commands {

/// Thrown for an unknown identifier.
Failure noSuchKey(qlonglong idKey);
Failure noSuchAction(qlonglong idAction);

/// The key with this identifier; throws noSuchKey() if there is none.
Key keyOf(client::ProgrammableKeys &service, qlonglong idKey);

/// The action with this identifier; throws noSuchAction() if there is none.
Action actionOf(client::ProgrammableKeys &service, qlonglong idAction);

/// Why a key was not created, changed or deleted. `code` is the result of the service.
Failure creationRefused(client::ProgrammableKeys &service, const Key &key, qlonglong code);
Failure keyChangeRefused(client::ProgrammableKeys &service, const Key &key, qlonglong code);
Failure keyDeletionRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code);

/// Why an action was not added, changed or deleted.
Failure additionRefused(qlonglong code);
Failure actionChangeRefused(client::ProgrammableKeys &service, qlonglong idAction, qlonglong code);
Failure actionDeletionRefused(client::ProgrammableKeys &service, qlonglong idAction,
                              qlonglong code);

/// Why an icon or a label was not sent to the module of a key.
Failure displayRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code);

} // namespace commands
