#pragma once

#include "BusConnection.h"
#include "BusObject.h"
#include "DataDirectory.h"
#include "InstanceLock.h"
#include "Watchdog.h"

#include <QObject>

class ZELModule;

namespace zel {

/// Brings one module up once the event loop runs, and takes it off the bus when the loop ends. A
/// start-up that fails ends the loop with status 1, after one line in the log that says why.
class ModuleRunner : public QObject
{
    Q_OBJECT

public:
    explicit ModuleRunner(ZELModule &module);

    /// To be called by whoever keeps the event loop waiting for long, but gets on.
    void feedWatchdog() { m_watchdog.feed(); }

private:
    void run();
    bool bringUp();
    bool ensureRunningAlone();
    QString dataDirectory() const;
    bool lockData();
    bool ensureData();
    bool deployOver(const DataDirectory &directory);
    static bool isFreeToWrite(const DataDirectory &directory);
    bool giveUp(const DataDirectory &directory);
    bool runHook(const char *name, bool (ZELModule::*hook)()) const;
    bool registerObjects();
    bool appearOnBus();
    void leaveBus();

    ZELModule &m_module;
    InstanceLock m_lock;
    BusConnection m_connection;
    BusObject m_object;
    BusObject m_logObject;
    Watchdog m_watchdog;
};

} // namespace zel
