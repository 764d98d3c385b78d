#pragma once

#include <QDBusAbstractAdaptor>

class ZELModule;

namespace zel {

/// Lets the rest of the platform run a module's lifecycle hooks: each method runs the hook of the
/// same meaning and returns what it returned.
class LifecycleAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELLifecycle")

public:
    explicit LifecycleAdaptor(ZELModule &module);

public slots:
    bool restoreDefault();
    bool restoreFactory();
    void presentationLoaded();
    void presentationStop();
    bool preSaveForSaveRestore();
    bool postRestoreForSaveRestore();

    /// Ends the event loop with status 0 once the reply is on its way, whatever the hook said.
    bool stop();

private:
    ZELModule &m_module;
};

} // namespace zel
