#include "events/Notifications.h"

#include "logging.h"
#include "module.h"

#include <zelcore/ZELModule.h>

#include <QVariant>

namespace events {
namespace {

template <typename Value>
void add(ZELEvent &event, const char *name, const Value &value)
{
    event.addArgument(QVariant::fromValue(value), QLatin1String(name), true);
}

bool send(ZELEvent &event, const char *name)
{
    event.setEvtName(QLatin1String(name));
    return sendNotification(event);
}

template <typename Value>
bool send(ZELEvent &event, const char *name, const char *argument, const Value &value)
{
    add(event, argument, value);
    return send(event, name);
}

void addPlace(ZELEvent &event, const KeyPlace &place)
{
    add(event, "addr", place.addr);
    add(event, "aom_type", place.aom_type);
    add(event, "key_num", place.key_num);
}

} // namespace

bool sendNotification(const ZELEvent &event)
{
    const bool sent = theModule().notifyEvent(event);
    if (sent)
        logging::debug("event %1 sent", event.getEvtName());
    else
        logging::error("event %1 notification failed", event.getEvtName());
    return sent;
}

bool keyCreated(ZELEvent &event, const Key &key)
{
    return send(event, "KEY_CREATE_NTF", "idKey", key);
}

bool keyModified(ZELEvent &event, const Key &key)
{
    return send(event, "KEY_MODIFY_NTF", "idKey", key);
}

bool keyDeleted(ZELEvent &event, qlonglong idKey)
{
    return send(event, "KEY_DELETE_NTF", "idKey", idKey);
}

bool keysFull(ZELEvent &event)
{
    return send(event, "KO_PROGKEYS_DB_FULL");
}

bool actionCreated(ZELEvent &event, const Action &action)
{
    return send(event, "ACTION_CREATE_NTF", "idAction", action);
}

bool actionModified(ZELEvent &event, const Action &action)
{
    return send(event, "ACTION_MODIFY_NTF", "idAction", action);
}

bool actionDeleted(ZELEvent &event, qlonglong idAction)
{
    return send(event, "ACTION_DELETE_NTF", "idAction", idAction);
}

bool databaseReset(ZELEvent &event)
{
    return send(event, "DB_RESET_NTF");
}

KeyPlace placeOf(const Key &key)
{
    return {key.aom_addr, key.aom_type, key.position};
}

bool setModuleLabel(ZELEvent &event, const KeyPlace &place, int labelState, const QString &label)
{
    addPlace(event, place);
    add(event, "label_state", labelState);
    add(event, "label_str", label);
    return send(event, "AOM_SET_LABEL_PROPERTY_REC");
}

bool setModuleIcon(ZELEvent &event, const KeyPlace &place, int iconX, int iconY)
{
    addPlace(event, place);
    add(event, "icon_x", iconX);
    add(event, "icon_y", iconY);
    return send(event, "AOM_SET_ICON_PROPERTY_REC");
}

bool moduleKeyPressed(ZELEvent &event, const Key &key, const Action &action, bool exists)
{
    add(event, "key", key);
    add(event, "action", action);
    add(event, "exists", exists);
    return send(event, "AOMKEY_PRESS_NTF");
}

} // namespace events
