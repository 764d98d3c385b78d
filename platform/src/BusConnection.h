#pragma once

#include <QDBusConnection>
#include <QObject>

namespace zel {

/// The connection of the process to the system bus, with the module's name and objects. Its receive
/// queue can hold all messages that arrive while the thread is blocked. If the connection is lost,
/// the process ends with status 1.
///
/// A function that returns false has logged the reason.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool open();

    /// Whether no process owns the name. Returns false if the bus does not reply.
    static bool isFree(const QString &serviceName);

    /// Claims the name without waiting in the queue of the name.
    static bool claim(const QString &serviceName);

    /// Releases the name. Returns when the bus has handled this and all messages sent before.
    static void release(const QString &serviceName);

    /// Publishes the object's adaptors at the path.
    static bool registerObject(const QString &path, QObject &object);

private slots:
    void lost();
};

} // namespace zel
