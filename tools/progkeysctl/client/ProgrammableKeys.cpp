#include "client/ProgrammableKeys.h"

#include "ProgrammableKeysProxy.h"
#include "client/Calls.h"

#include <zelcore/ZELBusNames.h>

namespace client {
namespace {

template <typename Record>
std::optional<Record> firstOf(const QList<Record> &list)
{
    return list.isEmpty() ? std::nullopt : std::optional<Record>(list.first());
}

void registerRecords()
{
    registerDBusKey();
    registerDBusAction();
    registerZELTypes();
}

} // namespace

ProgrammableKeys::ProgrammableKeys(const Bus &bus) : m_bus(bus)
{
    registerRecords();
    m_proxy = std::make_unique<ProgrammableKeysProxy>(
        zel::serviceName(moduleName()), zel::objectPath(moduleName()), bus.connection());
    m_proxy->setTimeout(bus.timeoutMs());
}

ProgrammableKeys::~ProgrammableKeys() = default;

QString ProgrammableKeys::moduleName()
{
    return QStringLiteral("ZelProgrammableKeys");
}

bool ProgrammableKeys::isRunning() const
{
    return m_bus.hasOwner(zel::serviceName(moduleName()));
}

ListKey ProgrammableKeys::keys() const
{
    return answer(m_bus, moduleName(), m_proxy->getAllProgrammableKeys());
}

std::optional<Key> ProgrammableKeys::key(qlonglong idKey) const
{
    return firstOf(answer(m_bus, moduleName(), m_proxy->getProgrammableKey(idKey)));
}

qlonglong ProgrammableKeys::createKey(const Key &key)
{
    return answer(m_bus, moduleName(), m_proxy->createProgrammableKey(key));
}

int ProgrammableKeys::modifyKey(const Key &key)
{
    return answer(m_bus, moduleName(), m_proxy->modifyProgrammableKey(key));
}

bool ProgrammableKeys::moveKeys(const QMapIntInt &positions)
{
    return answer(m_bus, moduleName(), m_proxy->changeProgrammableKeysPosition(positions));
}

int ProgrammableKeys::deleteKey(qlonglong idKey)
{
    return answer(m_bus, moduleName(), m_proxy->deleteProgrammableKey(idKey));
}

ListAction ProgrammableKeys::actions() const
{
    return answer(m_bus, moduleName(), m_proxy->getAllActions());
}

std::optional<Action> ProgrammableKeys::action(qlonglong idAction) const
{
    return firstOf(answer(m_bus, moduleName(), m_proxy->getAction(idAction)));
}

qlonglong ProgrammableKeys::addAction(const Action &action)
{
    return answer(m_bus, moduleName(), m_proxy->addAction(action));
}

int ProgrammableKeys::modifyAction(const Action &action)
{
    return answer(m_bus, moduleName(), m_proxy->modifyAction(action));
}

int ProgrammableKeys::deleteAction(qlonglong idAction)
{
    return answer(m_bus, moduleName(), m_proxy->deleteAction(idAction));
}

int ProgrammableKeys::setIconState(qlonglong idKey, int x, int y)
{
    return answer(m_bus, moduleName(), m_proxy->setIconStateForKey(idKey, x, y));
}

int ProgrammableKeys::setLabelState(qlonglong idKey, int state)
{
    return answer(m_bus, moduleName(), m_proxy->setLabelStateForKey(idKey, state));
}

} // namespace client
