#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELEvent.h>

class ZELModule;

/// The place of a key: an add-on module and a key number.
struct KeyPlace
{
    int addr;
    int aom_type;
    int key_num;
};

/// The place of a stored key.
KeyPlace placeOf(const Key &key);

/// Builds and sends the events of a module. Each function sets the name of the caller's event, adds
/// its arguments and sends it. All functions return whether the platform has sent the event. An
/// event that cannot be sent is logged and not sent again.
class Notifications
{
public:
    explicit Notifications(ZELModule &module) : m_module(module) {}

    /// Sends a complete event and logs the result.
    bool sendNotification(const ZELEvent &event) const;

    /// The argument "idKey" of KEY_CREATE_NTF and KEY_MODIFY_NTF is the whole key, but that of
    /// KEY_DELETE_NTF is only the identifier. Subscribers rely on this. The same applies to
    /// "idAction".
    bool keyCreated(ZELEvent &event, const Key &key) const;
    bool keyModified(ZELEvent &event, const Key &key) const;
    bool keyDeleted(ZELEvent &event, qlonglong idKey) const;
    bool keysFull(ZELEvent &event) const;

    bool actionCreated(ZELEvent &event, const Action &action) const;
    bool actionModified(ZELEvent &event, const Action &action) const;
    bool actionDeleted(ZELEvent &event, qlonglong idAction) const;

    bool databaseReset(ZELEvent &event) const;

    /// Requests that an add-on module show a label or an icon on one of its keys.
    bool setModuleLabel(ZELEvent &event, const KeyPlace &place, int labelState,
                        const QString &label) const;
    bool setModuleIcon(ZELEvent &event, const KeyPlace &place, int iconX, int iconY) const;

    /// A key on an add-on module was pressed. `exists` is true if the key is stored.
    bool moduleKeyPressed(ZELEvent &event, const Key &key, const Action &action, bool exists) const;

private:
    bool send(ZELEvent &event, const QString &name) const;

    ZELModule &m_module;
};
