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

/// One module of the phone: a lifecycle that the framework drives, events, and calls to peers.
///
/// Under a ZELApplication the framework starts the module as soon as the event loop runs: `check`,
/// `deploy` if `check` said no, `init`, `start`; then its object and last its name appear on the
/// bus. Under any other application object nobody calls the hooks.
class ZELModule : public QObject
{
    Q_OBJECT

public:
    explicit ZELModule(QString name);
    ~ZELModule() override;

    /// The first hook: whether the module's data is as the module needs it. If not, the framework
    /// calls `deploy`. A module does not open its data before this call.
    virtual bool check();
    /// Lays the module's data anew. The framework copies existing data aside first.
    virtual bool deploy();
    /// Prepares types and subscriptions; the module is not on the bus yet.
    virtual bool init();
    /// Creates the adaptor and whatever else is needed to answer calls.
    virtual bool start();
    virtual void presentation_loaded();
    virtual void presentation_stop();
    virtual bool stop();
    virtual bool preSaveForSaveRestore();
    virtual bool postRestoreForSaveRestore();
    virtual bool restoreDefault();
    virtual bool restoreFactory();

    /// The framework knows no capabilities: the maps are empty, each single one is a default one.
    Q_INVOKABLE virtual MapQStringCapability getCapabilities();
    Q_INVOKABLE virtual MapQStringCapability getCapabilities(int listId);
    Q_INVOKABLE virtual Capability getCapability(const QString &name);
    Q_INVOKABLE virtual Capability getCapability(int listId, const QString &name);

    /// Calls `slot` (as SLOT() writes it, taking a ZELEvent) of `receiver` for every event of that
    /// name, whoever sends it. False, with a log line, if there is no such slot or no bus.
    bool subscribeEvent(const QString &eventName, QObject *receiver, const char *slot);

    /// Sends an event to whoever subscribed to it. False if there is no bus, or an argument is of
    /// a type that the bus does not know.
    bool notifyEvent(const ZELEvent &event);

    /// Calls a method of a peer module and blocks this thread until it has answered, for at most
    /// 5 s: a reply, or an error message of the peer or the bus.
    QDBusMessage syncRemoteCall(const QString &moduleName, const QString &method,
                                const QList<QVariant> &arguments);

    QString getModuleName() const;

    /// What publishes the module's operations; null until the module has set it.
    QDBusAbstractAdaptor *getAdaptor() const;

protected:
    /// Set by `start`, with this module as its parent.
    QDBusAbstractAdaptor *m_adaptor = nullptr;

private:
    QString m_name;
    std::unique_ptr<zel::ModuleRunner> m_runner;
};
