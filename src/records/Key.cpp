#include "records/Key.h"

#include <QDBusMetaType>

#include <tuple>

namespace {

auto fields(const Key &key)
{
    return std::tie(key.idKey, key.dmId, key.container, key.idAction, key.position, key.icon,
                    key.type, key.aom_type, key.aom_addr);
}

} // namespace

bool operator==(const Key &left, const Key &right)
{
    return fields(left) == fields(right);
}

QDBusArgument &operator<<(QDBusArgument &argument, const Key &key)
{
    argument.beginStructure();
    argument << key.idKey << key.dmId << key.idAction << key.container << key.position << key.icon
             << key.type << key.aom_type << key.aom_addr;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Key &key)
{
    argument.beginStructure();
    argument >> key.idKey >> key.dmId >> key.idAction >> key.container >> key.position >>
        key.icon >> key.type >> key.aom_type >> key.aom_addr;
    argument.endStructure();
    return argument;
}

void registerDBusKey()
{
    qRegisterMetaType<Key>("Key");
    qRegisterMetaType<ListKey>("ListKey");
    qDBusRegisterMetaType<Key>();
    qDBusRegisterMetaType<ListKey>();
}
