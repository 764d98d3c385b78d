#pragma once

#include <QDBusConnection>
#include <QObject>

namespace zel {

/// The process's connection to the system bus, made fit for a module: roomy enough for what peers
/// send while the one thread is blocked, and watched, because a module without a bus is deaf.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// False, with a log line, if the bus cannot be reached.
    bool open();

    /// The bus is gone; what it did not answer since then says nothing.
    static bool isLost();
    static QString lostMessage();

    /// Does any process own the name? An error counts as yes: it is no leave to go on.
    static bool isTaken(const QString &serviceName);

    enum class Claim { Granted, Taken, Refused };

    /// Asks for the name; it is not waited for. Refused means that the bus does not allow it.
    static Claim claim(const QString &serviceName);

    /// Gives the name back. It returns once the bus has dealt with this and all sent before it.
    static void release(const QString &serviceName);

private slots:
    void lost();
};

} // namespace zel
