#include "zelcore/ZELTypes.h"

#include <QDBusMetaType>

bool operator==(const Capability &left, const Capability &right)
{
    return left.name == right.name && left.value == right.value;
}

QDBusArgument &operator<<(QDBusArgument &argument, const Capability &capability)
{
    argument.beginStructure();
    argument << capability.name << capability.value;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Capability &capability)
{
    argument.beginStructure();
    argument >> capability.name >> capability.value;
    argument.endStructure();
    return argument;
}

void registerZELTypes()
{
    qRegisterMetaType<Capability>("Capability");
    qRegisterMetaType<MapQStringCapability>("MapQStringCapability");
    qRegisterMetaType<QMapIntInt>("QMapIntInt");
    qDBusRegisterMetaType<Capability>();
    qDBusRegisterMetaType<MapQStringCapability>();
    qDBusRegisterMetaType<QMapIntInt>();
}
