#include "completion/CommandList.h"

#include "cli/CommonOptions.h"

#include <QJsonArray>

namespace completion {
namespace {

QJsonObject toJson(const cli::Parameter &parameter)
{
    QJsonObject object{
        {QStringLiteral("description"), parameter.help},
        {QStringLiteral("choices"), QJsonArray::fromStringList(parameter.type.choices)},
        {QStringLiteral("several"), parameter.isRepeatable},
        {QStringLiteral("required"), parameter.isRequired},
        {QStringLiteral("argument"),
         parameter.isFlag() ? QJsonValue() : QJsonValue(parameter.type.name)}};
    if (parameter.isPositional()) {
        object.insert(QStringLiteral("name"), parameter.name);
        return object;
    }
    QJsonArray names{parameter.name};
    if (!parameter.shortName.isEmpty())
        names.prepend(parameter.shortName);
    object.insert(QStringLiteral("names"), names);
    return object;
}

QJsonArray toJson(const QList<cli::Parameter> &parameters, bool arePositional)
{
    QJsonArray array;
    for (const cli::Parameter &parameter : parameters)
        if (parameter.isPositional() == arePositional)
            array.append(toJson(parameter));
    return array;
}

} // namespace

QJsonObject commandList(const QList<cli::Command> &commands)
{
    QJsonArray groups;
    QJsonArray all;
    for (const cli::Command &command : commands) {
        if (command.isHidden)
            continue;
        const QJsonObject object{
            {QStringLiteral("words"), QJsonArray::fromStringList(command.words)},
            {QStringLiteral("description"), command.summary},
            {QStringLiteral("options"), toJson(command.parameters, false)},
            {QStringLiteral("positionals"), toJson(command.parameters, true)}};
        (command.isGroup() ? groups : all).append(object);
    }
    return {{QStringLiteral("words"), QJsonArray()},
            {QStringLiteral("options"), toJson(cli::commonOptions(), false)},
            {QStringLiteral("positionals"), QJsonArray()},
            {QStringLiteral("groups"), groups},
            {QStringLiteral("commands"), all}};
}

} // namespace completion
