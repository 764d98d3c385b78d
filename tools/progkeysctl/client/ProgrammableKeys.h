#pragma once

#include "client/Bus.h"
#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELTypes.h>

#include <memory>
#include <optional>

class ProgrammableKeysProxy;

namespace client {

/// The service. Calls block and return the results of the service, including its result codes. They
/// throw a Failure for an error of the bus.
class ProgrammableKeys
{
public:
    explicit ProgrammableKeys(const Bus &bus);
    ~ProgrammableKeys();
    ProgrammableKeys(const ProgrammableKeys &) = delete;
    ProgrammableKeys &operator=(const ProgrammableKeys &) = delete;

    static QString moduleName();
    bool isRunning() const;

    ListKey keys() const;
    std::optional<Key> key(qlonglong idKey) const;
    qlonglong createKey(const Key &key);
    int modifyKey(const Key &key);
    bool moveKeys(const QMapIntInt &positions);
    int deleteKey(qlonglong idKey);

    ListAction actions() const;
    std::optional<Action> action(qlonglong idAction) const;
    qlonglong addAction(const Action &action);
    int modifyAction(const Action &action);
    int deleteAction(qlonglong idAction);

    int setIconState(qlonglong idKey, int x, int y);
    int setLabelState(qlonglong idKey, int state);

private:
    const Bus &m_bus;
    std::unique_ptr<ProgrammableKeysProxy> m_proxy;
};

} // namespace client
