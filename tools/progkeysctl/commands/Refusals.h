#pragma once

#include "client/ProgrammableKeys.h"
#include "outcome/Failure.h"

/// What the service's result codes mean to people, with the likely cause. The service does not say
/// why it refuses, so the cause is looked up afterwards.
namespace commands {

/// Thrown where an identifier names nothing.
Failure noSuchKey(qlonglong idKey);
Failure noSuchAction(qlonglong idAction);

/// The key of that id; throws noSuchKey() if there is none.
Key keyOf(client::ProgrammableKeys &service, qlonglong idKey);

/// The action of that id; throws noSuchAction() if there is none.
Action actionOf(client::ProgrammableKeys &service, qlonglong idAction);

/// Why a key was not created, changed or deleted. `code` is what the service answered.
Failure creationRefused(client::ProgrammableKeys &service, const Key &key, qlonglong code);
Failure keyChangeRefused(client::ProgrammableKeys &service, const Key &key, qlonglong code);
Failure keyDeletionRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code);

/// Why an action was not added, changed or deleted.
Failure additionRefused(qlonglong code);
Failure actionChangeRefused(client::ProgrammableKeys &service, qlonglong idAction, qlonglong code);
Failure actionDeletionRefused(client::ProgrammableKeys &service, qlonglong idAction,
                              qlonglong code);

/// Why a module was not asked to show an icon or a label for the key.
Failure displayRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code);

} // namespace commands
