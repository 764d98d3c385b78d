#include "LifecycleAdaptor.h"

#include "zelcore/ZELApplication.h"
#include "zelcore/ZELModule.h"

namespace zel {

LifecycleAdaptor::LifecycleAdaptor(ZELModule &module)
    : QDBusAbstractAdaptor(&module), m_module(module)
{
}

bool LifecycleAdaptor::restoreDefault()
{
    return m_module.restoreDefault();
}

bool LifecycleAdaptor::restoreFactory()
{
    return m_module.restoreFactory();
}

void LifecycleAdaptor::presentationLoaded()
{
    m_module.presentation_loaded();
}

void LifecycleAdaptor::presentationStop()
{
    m_module.presentation_stop();
}

bool LifecycleAdaptor::preSaveForSaveRestore()
{
    return m_module.preSaveForSaveRestore();
}

bool LifecycleAdaptor::postRestoreForSaveRestore()
{
    return m_module.postRestoreForSaveRestore();
}

bool LifecycleAdaptor::stop()
{
    const bool result = m_module.stop();
    ZELApplication::end(); // which happens after the reply: that is sent when this call returns
    return result;
}

} // namespace zel
