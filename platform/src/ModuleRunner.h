#pragma once

#include "BusConnection.h"
#include "BusObject.h"
#include "DataDirectory.h"
#include "InstanceLock.h"
#include "Watchdog.h"

#include <QObject>

class ZELModule;

namespace zel {

/// Starts a module when the event loop runs, and removes it from the bus when the loop ends. If the
/// start fails, it logs the reason in one line and ends the loop with status 1.
class ModuleRunner : public QObject
{
    Q_OBJECT

public:
    explicit ModuleRunner(ZELModule &module);

    /// Call this after operations that block the event loop for a long time.
    void feedWatchdog() { m_watchdog.feed(); }

private:
    void run();
    bool bringUp();
    bool lockData();
    bool ensureData();
    bool deployOver();
    bool isFreeToWrite() const;
    bool giveUp() const;
    bool runHook(const char *name, bool (ZELModule::*hook)()) const;
    bool registerObjects();
    bool appearOnBus();
    void leaveBus();

    ZELModule &m_module;
    DataDirectory m_directory;
    InstanceLock m_lock;
    BusConnection m_connection;
    BusObject m_object;
    BusObject m_logObject;
    Watchdog m_watchdog;
};

} // namespace zel
