#include "records/Key.h"

#include <QDBusMetaType>

bool operator==(const Key &left, const Key &right)
{
    return fields::areEqual(left, right);
}

QDBusArgument &operator<<(QDBusArgument &argument, const Key &key)
{
    return fields::write(argument, key);
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Key &key)
{
    return fields::read(argument, key);
}

void registerDBusKey()
{
    qRegisterMetaType<Key>("Key");
    qRegisterMetaType<ListKey>("ListKey");
    qDBusRegisterMetaType<Key>();
    qDBusRegisterMetaType<ListKey>();
}
