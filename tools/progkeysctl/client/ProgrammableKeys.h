#pragma once

#include "client/Bus.h"
#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELTypes.h>

#include <optional>

namespace client {

/// The service. Calls block and return the results of the service, including its result codes. They
/// throw a Failure for an error of the bus.
class ProgrammableKeys
{
public:
    explicit ProgrammableKeys(const Bus &bus);

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

    /// Runs a lifecycle hook, such as `restoreDefault`. Its result is ignored, because it does not
    /// depend on the data.
    void runHook(const QString &method);

    /// The text of a setting of the phone. As in the service, it is missing if the SettingsManager
    /// does not answer or has no such setting.
    std::optional<QString> setting(const QString &name) const;

private:
    template <typename Value, typename... Arguments>
    Value call(const char *method, const Arguments &...arguments) const;

    const Bus &m_bus;
};

} // namespace client
