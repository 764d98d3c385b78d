#include "records/Action.h"

#include <QDBusMetaType>

#include <tuple>

namespace {

auto fields(const Action &action)
{
    return std::tie(action.idAction, action.dmId, action.type, action.action, action.webAppName,
                    action.arguments, action.label, action.shortLabel);
}

} // namespace

bool operator==(const Action &left, const Action &right)
{
    return fields(left) == fields(right);
}

QDBusArgument &operator<<(QDBusArgument &argument, const Action &action)
{
    argument.beginStructure();
    argument << action.idAction << action.dmId << action.type << action.action << action.webAppName
             << action.arguments << action.label << action.shortLabel;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Action &action)
{
    argument.beginStructure();
    argument >> action.idAction >> action.dmId >> action.type >> action.action >>
        action.webAppName >> action.arguments >> action.label >> action.shortLabel;
    argument.endStructure();
    return argument;
}

void registerDBusAction()
{
    qRegisterMetaType<Action>("Action");
    qRegisterMetaType<ListAction>("ListAction");
    qDBusRegisterMetaType<Action>();
    qDBusRegisterMetaType<ListAction>();
}
