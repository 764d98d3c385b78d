#pragma once

#include "zelcore/ZELApplication.h"
#include "zelcore/ZELModule.h"

#include <QDBusAbstractAdaptor>

namespace zel {

/// The lifecycle interface of a module on the bus. Each method runs the corresponding hook and
/// returns its result.
class LifecycleAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELLifecycle")

public:
    explicit LifecycleAdaptor(ZELModule &module) : QDBusAbstractAdaptor(&module), m_module(module)
    {
    }

public slots:
    bool restoreDefault() { return m_module.restoreDefault(); }
    bool restoreFactory() { return m_module.restoreFactory(); }
    void presentationLoaded() { m_module.presentation_loaded(); }
    void presentationStop() { m_module.presentation_stop(); }
    bool preSaveForSaveRestore() { return m_module.preSaveForSaveRestore(); }
    bool postRestoreForSaveRestore() { return m_module.postRestoreForSaveRestore(); }

    /// Ends the event loop with status 0, even if the hook returned false.
    bool stop()
    {
        const bool result = m_module.stop();
        ZELApplication::end(); // takes effect after the reply has been sent
        return result;
    }

private:
    ZELModule &m_module;
};

} // namespace zel
