#include "fields/Places.h"

#include "text/Format.h"

namespace fields {

bool isSamePlace(const Key &left, const Key &right)
{
    if (left.type != right.type || left.position != right.position)
        return false;
    return left.type == KeyType::AddOnModule
               ? left.aom_type == right.aom_type && left.aom_addr == right.aom_addr
               : left.container == right.container;
}

QString described(const Key &key)
{
    return key.type == KeyType::AddOnModule
               ? format("module %1, key %2", key.aom_addr, key.position)
               : format("%1, position %2", key.container, key.position);
}

QString described(const Action &action)
{
    return action.label.isEmpty() ? action.action : action.label;
}

} // namespace fields
