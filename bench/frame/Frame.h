#pragma once

#include <QDBusAbstractAdaptor>

/// The least that can be called over the bus.
class FrameAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    explicit FrameAdaptor(QObject *parent) : QDBusAbstractAdaptor(parent) {}

public slots:
    void doNothing() {}
};
