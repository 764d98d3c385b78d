#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELEvent.h>

class ZELModule;

/// The place of a key: which key of which add-on module.
struct KeyPlace
{
    int addr;
    int aom_type;
    int key_num;
};

/// The place of a stored key.
KeyPlace placeOf(const Key &key);

/// Builds and sends the events of a module. Each builder sets the name of the caller's event, adds
/// the arguments and sends it. All return whether the platform accepted the event; a refused event
/// is logged and not sent again.
class Notifications
{
public:
    explicit Notifications(ZELModule &module) : m_module(module) {}

    /// Sends a finished event and logs the outcome.
    bool sendNotification(const ZELEvent &event) const;

    /// KEY_CREATE_NTF and KEY_MODIFY_NTF carry the whole key as "idKey". KEY_DELETE_NTF carries
    /// only the identifier under the same name. Listeners rely on that; actions do the same.
    bool keyCreated(ZELEvent &event, const Key &key) const;
    bool keyModified(ZELEvent &event, const Key &key) const;
    bool keyDeleted(ZELEvent &event, qlonglong idKey) const;
    bool keysFull(ZELEvent &event) const;

    bool actionCreated(ZELEvent &event, const Action &action) const;
    bool actionModified(ZELEvent &event, const Action &action) const;
    bool actionDeleted(ZELEvent &event, qlonglong idAction) const;

    bool databaseReset(ZELEvent &event) const;

    /// Requests to an add-on module to show a label or an icon on one of its keys.
    bool setModuleLabel(ZELEvent &event, const KeyPlace &place, int labelState,
                        const QString &label) const;
    bool setModuleIcon(ZELEvent &event, const KeyPlace &place, int iconX, int iconY) const;

    /// A key of an add-on module was pressed. `exists` tells whether the key is stored.
    bool moduleKeyPressed(ZELEvent &event, const Key &key, const Action &action, bool exists) const;

private:
    bool send(ZELEvent &event, const QString &name) const;

    ZELModule &m_module;
};
