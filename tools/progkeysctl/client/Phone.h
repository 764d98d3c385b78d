#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELTypes.h>

#include <QDBusConnection>
#include <QDBusReply>
#include <QStringList>

#include <optional>

namespace client {

/// Which bus to use.
struct BusChoice
{
    QString kind;    ///< "system", "session" or "address"
    QString address; ///< empty if it is the standard one
};

/// The name of the service as a module of the phone.
const QLatin1String Service("ZelProgrammableKeys");

/// The modules on the bus of a phone. Calls block. They throw a Failure for an error of the bus.
class Phone
{
public:
    /// `timeoutMs` is the maximum wait of each call.
    Phone(const BusChoice &choice, int timeoutMs);
    ~Phone();
    Phone(const Phone &) = delete;
    Phone &operator=(const Phone &) = delete;

    const QDBusConnection &connection() const { return m_connection; }
    const BusChoice &choice() const { return m_choice; }

    /// The bus in messages: "the system bus", with its address if that is not the standard one.
    QString busName() const;

    /// The modules that are running, in the order of their names.
    QStringList modules() const;

    /// The unique name on the bus of the module that is running; empty if there is none.
    QString connectionOf(const QString &module) const;
    bool isRunning(const QString &module) const { return !connectionOf(module).isEmpty(); }

    /// Calls a method of the service and returns its result, which may be a result code.
    template <typename Value, typename... Arguments>
    Value call(const char *method, const Arguments &...arguments) const
    {
        const QDBusReply<Value> reply =
            callModule(Service, zel::operationsInterface(), QString::fromLatin1(method),
                       {QVariant::fromValue(arguments)...});
        if (!reply.isValid())
            throwCallFailure(Service, reply.error());
        return reply.value();
    }

    ListKey keys() const { return call<ListKey>("getAllProgrammableKeys"); }
    ListAction actions() const { return call<ListAction>("getAllActions"); }

    /// Runs a lifecycle hook of the service, such as `restoreDefault`. Its result is ignored,
    /// because it does not depend on the data.
    void runHook(const QString &method) const;

    /// The text of a setting of the phone. As in the service, it is missing if the SettingsManager
    /// does not answer or has no such setting.
    std::optional<QString> setting(const QString &name) const;

    /// Throws that the module is not running.
    [[noreturn]] void throwNotRunning(const QString &module) const;

    /// Throws that the connection to the bus is lost.
    [[noreturn]] void throwLost() const;

    /// Throws that the bus denies access. `what` begins the message.
    [[noreturn]] void throwDenied(const QString &what) const;

private:
    QDBusMessage callModule(const QString &module, const QString &interface, const QString &method,
                            const QVariantList &arguments = {}) const;
    [[noreturn]] void throwCallFailure(const QString &module, const QDBusError &error) const;
    bool isNotRunning(const QString &module, const QDBusError &error) const;

    BusChoice m_choice;
    QDBusConnection m_connection;
    int m_timeoutMs;
};

} // namespace client
