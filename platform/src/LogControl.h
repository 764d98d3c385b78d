#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>
#include <QVariantMap>

namespace zel {

class BusObject;

/// The interface `org.freedesktop.LogControl1`, with which an administrator reads and sets the log
/// level of a running process.
///
/// It implements the methods of `org.freedesktop.DBus.Properties` itself, because setters of Qt
/// properties cannot refuse a value. In addition, Qt's errors repeat the name that the caller sent.
/// With a long name, the reply would exceed the size limit, and the bus would disconnect the
/// process.
class LogControl : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.DBus.Properties")
    Q_CLASSINFO("D-Bus Introspection",
                "  <interface name=\"org.freedesktop.LogControl1\">\n"
                "    <annotation name=\"org.freedesktop.DBus.Property.EmitsChangedSignal\""
                " value=\"false\"/>\n"
                "    <property name=\"LogLevel\" type=\"s\" access=\"readwrite\">\n"
                "      <annotation name=\"org.freedesktop.systemd1.Privileged\" value=\"true\"/>\n"
                "    </property>\n"
                "    <property name=\"LogTarget\" type=\"s\" access=\"readwrite\">\n"
                "      <annotation name=\"org.freedesktop.systemd1.Privileged\" value=\"true\"/>\n"
                "    </property>\n"
                "    <property name=\"SyslogIdentifier\" type=\"s\" access=\"read\"/>\n"
                "  </interface>\n")

public:
    /// `object` becomes the owner of the adaptor.
    explicit LogControl(BusObject &object);

    /// The object path that the interface requires in all processes.
    static QString path();

public slots:
    QDBusVariant Get(const QString &interface, const QString &property);
    QVariantMap GetAll(const QString &interface);
    void Set(const QString &interface, const QString &property, const QDBusVariant &value);

private:
    void setLevel(const QVariant &name);

    BusObject &m_object;
};

} // namespace zel
