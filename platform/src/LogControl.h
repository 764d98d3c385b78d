#pragma once

#include <QDBusVirtualObject>

namespace zel {

/// The standard object by which an administrator asks for the log level of a running process, and
/// sets it: `org.freedesktop.LogControl1`. Every call that wants a reply gets exactly one.
///
/// An adaptor would not do: its properties cannot refuse a value.
class LogControl : public QDBusVirtualObject
{
public:
    using QDBusVirtualObject::QDBusVirtualObject;

    /// Where whoever looks for it expects it, whatever the process.
    static QString path();

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
};

} // namespace zel
