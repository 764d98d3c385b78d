#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELEvent.h>

/// The events that the service sends. One builder each: it names the caller's event, adds the
/// arguments and sends it. All return whether the platform took the event; one that it did not
/// take is in the log, and nobody tries again.
namespace events {

/// Hands a finished event to the platform and logs the outcome.
bool sendNotification(const ZELEvent &event);

/// KEY_CREATE_NTF and KEY_MODIFY_NTF carry the whole key as "idKey", KEY_DELETE_NTF only the
/// identifier under the same name; listeners count on it. The same holds for actions.
bool keyCreated(ZELEvent &event, const Key &key);
bool keyModified(ZELEvent &event, const Key &key);
bool keyDeleted(ZELEvent &event, qlonglong idKey);
bool keysFull(ZELEvent &event);

bool actionCreated(ZELEvent &event, const Action &action);
bool actionModified(ZELEvent &event, const Action &action);
bool actionDeleted(ZELEvent &event, qlonglong idAction);

bool databaseReset(ZELEvent &event);

/// Where on which add-on module a key is.
struct KeyPlace
{
    int addr;
    int aom_type;
    int key_num;
};

/// The place of a stored key.
KeyPlace placeOf(const Key &key);

/// Requests to an add-on module to show something on one of its keys.
bool setModuleLabel(ZELEvent &event, const KeyPlace &place, int labelState, const QString &label);
bool setModuleIcon(ZELEvent &event, const KeyPlace &place, int iconX, int iconY);

/// A key was pressed on an add-on module; `exists` tells whether it is a stored one.
bool moduleKeyPressed(ZELEvent &event, const Key &key, const Action &action, bool exists);

} // namespace events
