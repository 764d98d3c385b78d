#pragma once

#include <QDBusConnection>
#include <QObject>

namespace zel {

/// The process's connection to the system bus, and the module's name and objects there. It has room
/// for all that peers send while the thread is blocked. When the connection is lost, the process
/// ends with status 1.
///
/// A function that returns false has logged why.
class BusConnection : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool open();

    /// Whether no process owns the name. If the bus does not tell, the name is not free.
    static bool isFree(const QString &serviceName);

    /// Claims the name, without waiting for another owner to give it up.
    static bool claim(const QString &serviceName);

    /// Gives the name back. Returns when the bus has handled this and all that was sent before.
    static void release(const QString &serviceName);

    /// Publishes the object's adaptors at the path.
    static bool registerObject(const QString &path, QObject &object);

private slots:
    void lost();
};

} // namespace zel
