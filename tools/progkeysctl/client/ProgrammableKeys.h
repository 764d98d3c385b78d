#pragma once

#include "client/Bus.h"
#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELTypes.h>

#include <QDBusReply>

#include <optional>

namespace client {

/// The service. Calls block. They throw a Failure for an error of the bus.
class ProgrammableKeys
{
public:
    explicit ProgrammableKeys(const Bus &bus);

    static QString moduleName();
    bool isRunning() const;

    /// Calls a method of the operations interface and returns its result, which may be a result
    /// code.
    template <typename Value, typename... Arguments>
    Value call(const char *method, const Arguments &...arguments) const
    {
        const QDBusReply<Value> reply =
            m_bus.call(moduleName(), zel::operationsInterface(), QString::fromLatin1(method),
                       {QVariant::fromValue(arguments)...});
        if (!reply.isValid())
            throwCallFailure(m_bus, moduleName(), reply.error());
        return reply.value();
    }

    ListKey keys() const { return call<ListKey>("getAllProgrammableKeys"); }
    ListAction actions() const { return call<ListAction>("getAllActions"); }

    /// Runs a lifecycle hook, such as `restoreDefault`. Its result is ignored, because it does not
    /// depend on the data.
    void runHook(const QString &method) const;

    /// The text of a setting of the phone. As in the service, it is missing if the SettingsManager
    /// does not answer or has no such setting.
    std::optional<QString> setting(const QString &name) const;

private:
    const Bus &m_bus;
};

} // namespace client
