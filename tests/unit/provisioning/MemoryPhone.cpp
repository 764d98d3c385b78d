#include "provisioning/MemoryPhone.h"

#include "support/Samples.h"

#include <zelcore/ZELLogger.h>

#include <algorithm>

namespace unit {
namespace {

void logCall(const QString &what)
{
    logger().debug(QStringLiteral("> ") + what);
}

} // namespace

void MemoryPhone::put(const Action &action)
{
    m_actions.insert(action.idAction, action);
    m_lastAction = std::max(m_lastAction, action.idAction);
}

void MemoryPhone::put(const Key &key)
{
    m_keys.insert(key.idKey, key);
    m_lastKey = std::max(m_lastKey, key.idKey);
}

QStringList MemoryPhone::rows() const
{
    QStringList rows;
    for (const Action &action : m_actions)
        rows.append(describe(action));
    for (const Key &key : m_keys)
        rows.append(describe(key));
    return rows;
}

ListAction MemoryPhone::allActions()
{
    logCall(QStringLiteral("all actions"));
    return m_actions.values();
}

std::optional<Action> MemoryPhone::actionWithDmId(const QString &dmId)
{
    logCall(QStringLiteral("action of '%1'").arg(dmId));
    for (const Action &action : std::as_const(m_actions)) {
        if (action.dmId == dmId)
            return action;
    }
    return std::nullopt;
}

void MemoryPhone::addAction(const Action &action)
{
    logCall(QStringLiteral("add ") + describe(action));
    if (!labelThatCannotBeStored.isEmpty() && action.label == labelThatCannotBeStored)
        return;
    Action stored = action;
    stored.idAction = ++m_lastAction;
    m_actions.insert(stored.idAction, stored);
    logCall(QStringLiteral("ACTION_CREATE_NTF ") + describe(stored));
}

void MemoryPhone::modifyAction(const Action &action)
{
    logCall(QStringLiteral("modify ") + describe(action));
    if (!m_actions.contains(action.idAction))
        return;
    const Action old = m_actions.value(action.idAction);
    m_actions.insert(action.idAction, action);
    logCall(QStringLiteral("ACTION_MODIFY_NTF ") + describe(action));
    if (old.shortLabel == action.shortLabel)
        return;
    for (const Key &key : std::as_const(m_keys)) {
        if (key.type == KeyType::AddOnModule && key.idAction == action.idAction)
            logCall(QStringLiteral("AOM_SET_LABEL_PROPERTY_REC %1 '%2'")
                        .arg(QString::number(key.idKey), action.shortLabel));
    }
}

void MemoryPhone::deleteAction(qlonglong idAction)
{
    logCall(QStringLiteral("delete action %1").arg(idAction));
    if (idAction == ReservedActionId || !m_actions.contains(idAction) ||
        !m_actions.value(idAction).dmId.isEmpty())
        return;
    m_actions.remove(idAction);
    deleteKeysOf(idAction);
    logCall(QStringLiteral("ACTION_DELETE_NTF %1").arg(idAction));
}

void MemoryPhone::deleteKeysOf(qlonglong idAction)
{
    const ListKey stored = keys();
    for (const Key &key : stored) {
        if (key.idAction != idAction || !key.dmId.isEmpty())
            continue;
        m_keys.remove(key.idKey);
        logCall(QStringLiteral("KEY_DELETE_NTF %1").arg(key.idKey));
    }
}

void MemoryPhone::deleteProvisionedKeys()
{
    logCall(QStringLiteral("delete provisioned keys"));
    const ListKey stored = keys();
    for (const Key &key : stored) {
        if (!key.dmId.isEmpty())
            m_keys.remove(key.idKey);
    }
}

bool MemoryPhone::hasRoomFor(const Key &key) const
{
    const auto isOnSet = [](const Key &stored) { return stored.type == KeyType::Set; };
    return key.type != KeyType::Set || !keyLimit ||
           std::count_if(m_keys.cbegin(), m_keys.cend(), isOnSet) < *keyLimit;
}

void MemoryPhone::createKey(const Key &key)
{
    logCall(QStringLiteral("create ") + describe(key));
    if (!m_actions.contains(key.idAction))
        return;
    if (!hasRoomFor(key)) {
        logCall(QStringLiteral("KO_PROGKEYS_DB_FULL"));
        return;
    }
    Key stored = key;
    stored.idKey = ++m_lastKey;
    m_keys.insert(stored.idKey, stored);
    logCall(QStringLiteral("KEY_CREATE_NTF ") + describe(stored));
    if (stored.type == KeyType::AddOnModule)
        logCall(QStringLiteral("AOM_SET_ICON_PROPERTY_REC %1").arg(stored.idKey));
}

} // namespace unit
