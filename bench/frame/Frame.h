#pragma once

#include <QDBusAbstractAdaptor>

/// An interface with one method that does nothing.
class FrameAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    explicit FrameAdaptor(QObject *parent) : QDBusAbstractAdaptor(parent) {}

public slots:
    void doNothing() {}
};
