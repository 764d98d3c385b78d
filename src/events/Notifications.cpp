#include "events/Notifications.h"

#include "logging.h"
#include "module.h"

#include <zelcore/ZELModule.h>

#include <QVariant>

namespace events {
namespace {

template <typename Value>
void add(ZELEvent &event, const QString &name, const Value &value)
{
    event.addArgument(QVariant::fromValue(value), name, true);
}

bool send(ZELEvent &event, const QString &name)
{
    event.setEvtName(name);
    return sendNotification(event);
}

template <typename Value>
bool send(ZELEvent &event, const QString &name, const QString &argument, const Value &value)
{
    add(event, argument, value);
    return send(event, name);
}

void addPlace(ZELEvent &event, const KeyPlace &place)
{
    add(event, QStringLiteral("addr"), place.addr);
    add(event, QStringLiteral("aom_type"), place.aom_type);
    add(event, QStringLiteral("key_num"), place.key_num);
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
    return send(event, QStringLiteral("KEY_CREATE_NTF"), QStringLiteral("idKey"), key);
}

bool keyModified(ZELEvent &event, const Key &key)
{
    return send(event, QStringLiteral("KEY_MODIFY_NTF"), QStringLiteral("idKey"), key);
}

bool keyDeleted(ZELEvent &event, qlonglong idKey)
{
    return send(event, QStringLiteral("KEY_DELETE_NTF"), QStringLiteral("idKey"), idKey);
}

bool keysFull(ZELEvent &event)
{
    return send(event, QStringLiteral("KO_PROGKEYS_DB_FULL"));
}

bool actionCreated(ZELEvent &event, const Action &action)
{
    return send(event, QStringLiteral("ACTION_CREATE_NTF"), QStringLiteral("idAction"), action);
}

bool actionModified(ZELEvent &event, const Action &action)
{
    return send(event, QStringLiteral("ACTION_MODIFY_NTF"), QStringLiteral("idAction"), action);
}

bool actionDeleted(ZELEvent &event, qlonglong idAction)
{
    return send(event, QStringLiteral("ACTION_DELETE_NTF"), QStringLiteral("idAction"), idAction);
}

bool databaseReset(ZELEvent &event)
{
    return send(event, QStringLiteral("DB_RESET_NTF"));
}

KeyPlace placeOf(const Key &key)
{
    return {key.aom_addr, key.aom_type, key.position};
}

bool setModuleLabel(ZELEvent &event, const KeyPlace &place, int labelState, const QString &label)
{
    addPlace(event, place);
    add(event, QStringLiteral("label_state"), labelState);
    add(event, QStringLiteral("label_str"), label);
    return send(event, QStringLiteral("AOM_SET_LABEL_PROPERTY_REC"));
}

bool setModuleIcon(ZELEvent &event, const KeyPlace &place, int iconX, int iconY)
{
    addPlace(event, place);
    add(event, QStringLiteral("icon_x"), iconX);
    add(event, QStringLiteral("icon_y"), iconY);
    return send(event, QStringLiteral("AOM_SET_ICON_PROPERTY_REC"));
}

bool moduleKeyPressed(ZELEvent &event, const Key &key, const Action &action, bool exists)
{
    add(event, QStringLiteral("key"), key);
    add(event, QStringLiteral("action"), action);
    add(event, QStringLiteral("exists"), exists);
    return send(event, QStringLiteral("AOMKEY_PRESS_NTF"));
}

} // namespace events
