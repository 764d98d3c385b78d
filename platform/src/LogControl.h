#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>
#include <QVariantMap>

namespace zel {

class BusObject;

/// The object of `org.freedesktop.LogControl1`, by which an administrator reads and sets the log
/// level of a running process.
///
/// It implements the properties itself, as methods of `org.freedesktop.DBus.Properties`. A setter
/// of Qt's properties cannot refuse a value. Qt's errors also repeat the name that the caller sent:
/// a long one makes the reply larger than the bus allows, and the bus then disconnects the process.
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
    /// The adaptor belongs to `object`.
    explicit LogControl(BusObject &object);

    /// The path that clients expect, in every process.
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
