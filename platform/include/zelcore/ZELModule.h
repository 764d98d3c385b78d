#pragma once

#include "zelcore/ZELEvent.h"
#include "zelcore/ZELTypes.h"

#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <QVariant>

#include <memory>

class QDBusAbstractAdaptor;

namespace zel {
class ModuleRunner;
}

/// A module of the phone: lifecycle hooks that the framework calls, events, and calls to peers.
///
/// Under a ZELApplication, the framework starts the module when the event loop runs: `check`,
/// `deploy` if `check` returned false, `init`, `start`. Then the framework registers the module's
/// object on the bus and claims its name. Under another application object, it calls no hooks.
class ZELModule : public QObject
{
    Q_OBJECT

public:
    explicit ZELModule(QString name);
    ~ZELModule() override;

    /// The first hook: whether the module can use its existing data. If not, the framework calls
    /// `deploy`. A module must not open its data before this call.
    virtual bool check() { return true; }
    /// Creates the module's data. The framework makes a copy of existing data before.
    virtual bool deploy() { return true; }
    /// Prepares types and subscriptions. The module is not on the bus yet.
    virtual bool init() { return true; }
    /// Creates the adaptor and everything else that the module needs to handle calls.
    virtual bool start() { return true; }
    virtual void presentation_loaded() {}
    virtual void presentation_stop() {}
    virtual bool stop() { return true; }
    virtual bool preSaveForSaveRestore() { return true; }
    virtual bool postRestoreForSaveRestore() { return true; }
    virtual bool restoreDefault() { return true; }
    virtual bool restoreFactory() { return true; }

    /// The framework has no capabilities: it returns empty maps and default capabilities.
    Q_INVOKABLE virtual MapQStringCapability getCapabilities() { return {}; }
    Q_INVOKABLE virtual MapQStringCapability getCapabilities(int /*listId*/) { return {}; }
    Q_INVOKABLE virtual Capability getCapability(const QString & /*name*/) { return {}; }
    Q_INVOKABLE virtual Capability getCapability(int /*listId*/, const QString & /*name*/)
    {
        return {};
    }

    /// Calls `slot` of `receiver` for each event with that name, from any sender. Specify the slot
    /// with SLOT(). Its parameter is a ZELEvent. Returns false and logs an error if there is no
    /// such slot, or if the bus refuses the subscription.
    bool subscribeEvent(const QString &eventName, QObject *receiver, const char *slot);

    /// Sends an event to all subscribers. Returns false if there is no bus, or if the bus does not
    /// know the type of an argument.
    bool notifyEvent(const ZELEvent &event);

    /// Calls a method of a peer module and waits up to 5 s for the reply. Returns the reply or an
    /// error message.
    QDBusMessage syncRemoteCall(const QString &moduleName, const QString &method,
                                const QList<QVariant> &arguments);

    QString getModuleName() const { return m_name; }

    /// The adaptor of the module's operations, or null if `start` has not set it.
    QDBusAbstractAdaptor *getAdaptor() const { return m_adaptor; }

protected:
    /// Set by `start`, with this module as its parent.
    QDBusAbstractAdaptor *m_adaptor = nullptr;

private:
    QString m_name;
    std::unique_ptr<zel::ModuleRunner> m_runner;
};
