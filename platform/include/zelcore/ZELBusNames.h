#pragma once

#include <QString>

/// The names of the platform on the bus, for programs that call modules. Modules do not need them.
namespace zel {

/// `com.velmora.Tessaro.<module name>`
inline QString serviceName(const QString &moduleName)
{
    return QStringLiteral("com.velmora.Tessaro.") + moduleName;
}

/// `/com/velmora/Tessaro/<module name>`
inline QString objectPath(const QString &moduleName)
{
    return QStringLiteral("/com/velmora/Tessaro/") + moduleName;
}

/// The interface of every module's operations.
inline QString operationsInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELInterface");
}

/// The interface of every module's lifecycle hooks.
inline QString lifecycleInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELLifecycle");
}

/// A platform event is the signal `event` of this interface, on the sender's object path.
inline QString eventsInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELEvents");
}

inline QString eventSignal()
{
    return QStringLiteral("event");
}

/// The error reply to a call that a module could not handle.
inline QString invocationFailedError()
{
    return QStringLiteral("com.velmora.Tessaro.Error.InvocationFailed");
}

} // namespace zel
