#pragma once

#include <QDBusArgument>
#include <QMap>
#include <QMetaType>
#include <QString>

/// A named capability of a module, `(si)` on the bus. Default-constructed, it stands for a
/// capability that the module does not have.
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

/// Makes the types above known by name to the meta-type system and to the bus. A module does it
/// when it is constructed; doing it again changes nothing.
void registerZELTypes();
