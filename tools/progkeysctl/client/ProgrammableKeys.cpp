#include "client/ProgrammableKeys.h"

#include "text/Format.h"

#include <zelcore/ZELBusNames.h>

#include <QDBusReply>

namespace client {
namespace {

template <typename Record>
std::optional<Record> firstOf(const QList<Record> &list)
{
    return list.isEmpty() ? std::nullopt : std::optional<Record>(list.first());
}

} // namespace

ProgrammableKeys::ProgrammableKeys(const Bus &bus) : m_bus(bus)
{
    registerDBusKey();
    registerDBusAction();
    registerZELTypes();
}

QString ProgrammableKeys::moduleName()
{
    return "ZelProgrammableKeys"_s;
}

template <typename Value, typename... Arguments>
Value ProgrammableKeys::call(const char *method, const Arguments &...arguments) const
{
    const QDBusReply<Value> reply =
        m_bus.call(moduleName(), zel::operationsInterface(), QString::fromLatin1(method),
                   {QVariant::fromValue(arguments)...});
    if (!reply.isValid())
        throwCallFailure(m_bus, moduleName(), reply.error());
    return reply.value();
}

bool ProgrammableKeys::isRunning() const
{
    return m_bus.hasOwner(zel::serviceName(moduleName()));
}

ListKey ProgrammableKeys::keys() const
{
    return call<ListKey>("getAllProgrammableKeys");
}

std::optional<Key> ProgrammableKeys::key(qlonglong idKey) const
{
    return firstOf(call<ListKey>("getProgrammableKey", idKey));
}

qlonglong ProgrammableKeys::createKey(const Key &key)
{
    return call<qlonglong>("createProgrammableKey", key);
}

int ProgrammableKeys::modifyKey(const Key &key)
{
    return call<int>("modifyProgrammableKey", key);
}

bool ProgrammableKeys::moveKeys(const QMapIntInt &positions)
{
    return call<bool>("changeProgrammableKeysPosition", positions);
}

int ProgrammableKeys::deleteKey(qlonglong idKey)
{
    return call<int>("deleteProgrammableKey", idKey);
}

ListAction ProgrammableKeys::actions() const
{
    return call<ListAction>("getAllActions");
}

std::optional<Action> ProgrammableKeys::action(qlonglong idAction) const
{
    return firstOf(call<ListAction>("getAction", idAction));
}

qlonglong ProgrammableKeys::addAction(const Action &action)
{
    return call<qlonglong>("addAction", action);
}

int ProgrammableKeys::modifyAction(const Action &action)
{
    return call<int>("modifyAction", action);
}

int ProgrammableKeys::deleteAction(qlonglong idAction)
{
    return call<int>("deleteAction", idAction);
}

int ProgrammableKeys::setIconState(qlonglong idKey, int x, int y)
{
    return call<int>("setIconStateForKey", idKey, x, y);
}

int ProgrammableKeys::setLabelState(qlonglong idKey, int state)
{
    return call<int>("setLabelStateForKey", idKey, state);
}

void ProgrammableKeys::runHook(const QString &method)
{
    const QDBusMessage reply = m_bus.call(moduleName(), zel::lifecycleInterface(), method);
    if (reply.type() != QDBusMessage::ReplyMessage)
        throwCallFailure(m_bus, moduleName(), QDBusError(reply));
}

std::optional<QString> ProgrammableKeys::setting(const QString &name) const
{
    const QDBusReply<QString> reply =
        m_bus.call("SettingsManager"_s, zel::operationsInterface(), "getSettingValue"_s, {name});
    return reply.isValid() ? std::optional(reply.value()) : std::nullopt;
}

} // namespace client
