#include "records/Action.h"

#include <QDBusMetaType>

bool operator==(const Action &left, const Action &right)
{
    return fields::areEqual(left, right);
}

QDBusArgument &operator<<(QDBusArgument &argument, const Action &action)
{
    return fields::write(argument, action);
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Action &action)
{
    return fields::read(argument, action);
}

void registerDBusAction()
{
    qRegisterMetaType<Action>("Action");
    qRegisterMetaType<ListAction>("ListAction");
    qDBusRegisterMetaType<Action>();
    qDBusRegisterMetaType<ListAction>();
}
