#include "events/Notifications.h"

#include "logging.h"

#include <zelcore/ZELModule.h>

#include <QVariant>

namespace {

template <typename Value>
void add(ZELEvent &event, const QString &name, const Value &value)
{
    event.addArgument(QVariant::fromValue(value), name, true);
}

void addPlace(ZELEvent &event, const KeyPlace &place)
{
    add(event, QStringLiteral("addr"), place.addr);
    add(event, QStringLiteral("aom_type"), place.aom_type);
    add(event, QStringLiteral("key_num"), place.key_num);
}

} // namespace

KeyPlace placeOf(const Key &key)
{
    return {key.aom_addr, key.aom_type, key.position};
}

bool Notifications::sendNotification(const ZELEvent &event) const
{
    const bool sent = m_module.notifyEvent(event);
    if (sent)
        logging::debug("event %1 sent", event.getEvtName());
    else
        logging::error("event %1 notification failed", event.getEvtName());
    return sent;
}

bool Notifications::send(ZELEvent &event, const QString &name) const
{
    event.setEvtName(name);
    return sendNotification(event);
}

bool Notifications::keyCreated(ZELEvent &event, const Key &key) const
{
    add(event, QStringLiteral("idKey"), key);
    return send(event, QStringLiteral("KEY_CREATE_NTF"));
}

bool Notifications::keyModified(ZELEvent &event, const Key &key) const
{
    add(event, QStringLiteral("idKey"), key);
    return send(event, QStringLiteral("KEY_MODIFY_NTF"));
}

bool Notifications::keyDeleted(ZELEvent &event, qlonglong idKey) const
{
    add(event, QStringLiteral("idKey"), idKey);
    return send(event, QStringLiteral("KEY_DELETE_NTF"));
}

bool Notifications::keysFull(ZELEvent &event) const
{
    return send(event, QStringLiteral("KO_PROGKEYS_DB_FULL"));
}

bool Notifications::actionCreated(ZELEvent &event, const Action &action) const
{
    add(event, QStringLiteral("idAction"), action);
    return send(event, QStringLiteral("ACTION_CREATE_NTF"));
}

bool Notifications::actionModified(ZELEvent &event, const Action &action) const
{
    add(event, QStringLiteral("idAction"), action);
    return send(event, QStringLiteral("ACTION_MODIFY_NTF"));
}

bool Notifications::actionDeleted(ZELEvent &event, qlonglong idAction) const
{
    add(event, QStringLiteral("idAction"), idAction);
    return send(event, QStringLiteral("ACTION_DELETE_NTF"));
}

bool Notifications::databaseReset(ZELEvent &event) const
{
    return send(event, QStringLiteral("DB_RESET_NTF"));
}

bool Notifications::setModuleLabel(ZELEvent &event, const KeyPlace &place, int labelState,
                                   const QString &label) const
{
    addPlace(event, place);
    add(event, QStringLiteral("label_state"), labelState);
    add(event, QStringLiteral("label_str"), label);
    return send(event, QStringLiteral("AOM_SET_LABEL_PROPERTY_REC"));
}

bool Notifications::setModuleIcon(ZELEvent &event, const KeyPlace &place, int iconX,
                                  int iconY) const
{
    addPlace(event, place);
    add(event, QStringLiteral("icon_x"), iconX);
    add(event, QStringLiteral("icon_y"), iconY);
    return send(event, QStringLiteral("AOM_SET_ICON_PROPERTY_REC"));
}

bool Notifications::moduleKeyPressed(ZELEvent &event, const Key &key, const Action &action,
                                     bool exists) const
{
    add(event, QStringLiteral("key"), key);
    add(event, QStringLiteral("action"), action);
    add(event, QStringLiteral("exists"), exists);
    return send(event, QStringLiteral("AOMKEY_PRESS_NTF"));
}
