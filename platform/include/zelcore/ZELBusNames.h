#pragma once

#include <QString>

/// The platform's conventions on the bus, for programs that talk to modules without being one. A
/// module has no use for them: the framework speaks for it.
namespace zel {

/// `com.velmora.Tessaro.<module name>`
QString serviceName(const QString &moduleName);

/// `/com/velmora/Tessaro/<module name>`
QString objectPath(const QString &moduleName);

/// The interface of every module's operations.
QString operationsInterface();

/// The interface on which every module's lifecycle hooks can be run.
QString lifecycleInterface();

/// Platform events are the signal `event` of this interface, on the sender's object path.
QString eventsInterface();
QString eventSignal();

/// The error of a call that its module could not answer at all.
QString invocationFailedError();

} // namespace zel
