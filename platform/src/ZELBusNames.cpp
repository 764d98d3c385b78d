#include "zelcore/ZELBusNames.h"

namespace zel {

QString serviceName(const QString &moduleName)
{
    return QStringLiteral("com.velmora.Tessaro.") + moduleName;
}

QString objectPath(const QString &moduleName)
{
    return QStringLiteral("/com/velmora/Tessaro/") + moduleName;
}

QString operationsInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELInterface");
}

QString lifecycleInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELLifecycle");
}

QString eventsInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELEvents");
}

QString eventSignal()
{
    return QStringLiteral("event");
}

QString invocationFailedError()
{
    return QStringLiteral("com.velmora.Tessaro.Error.InvocationFailed");
}

} // namespace zel
