#pragma once

#include <QDBusArgument>
#include <QMap>
#include <QMetaType>
#include <QString>

/// A named capability of a module, `(si)` on the bus. The default value means that the module does
/// not have the capability.
struct Capability
{
    QString name;
    int value = 0;
};

/// Capabilities by name, `a{s(si)}` on the bus.
using MapQStringCapability = QMap<QString, Capability>;

/// `a{ii}` on the bus.
using QMapIntInt = QMap<int, int>;

Q_DECLARE_METATYPE(Capability)
Q_DECLARE_METATYPE(MapQStringCapability)
Q_DECLARE_METATYPE(QMapIntInt)

bool operator==(const Capability &left, const Capability &right);
QDBusArgument &operator<<(QDBusArgument &argument, const Capability &capability);
const QDBusArgument &operator>>(const QDBusArgument &argument, Capability &capability);

/// Registers the types above with Qt's meta-type system and with the bus library. The constructor
/// of a module calls this. Further calls have no effect.
void registerZELTypes();
