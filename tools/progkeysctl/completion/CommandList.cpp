#include "completion/CommandList.h"

#include "completion/OptionShape.h"

#include <QJsonArray>

namespace completion {
namespace {

QJsonArray toArray(const std::vector<std::string> &words)
{
    QJsonArray array;
    for (const std::string &word : words)
        array.append(QString::fromStdString(word));
    return array;
}

QJsonObject toJson(const CLI::Option &option)
{
    QJsonObject object{
        {QStringLiteral("description"), QString::fromStdString(option.get_description())},
        {QStringLiteral("choices"), toArray(choices(option))},
        {QStringLiteral("several"), takesSeveral(option)},
        {QStringLiteral("required"), option.get_required()},
        {QStringLiteral("argument"),
         takesArgument(option) ? QString::fromStdString(argumentName(option)) : QJsonValue()}};
    if (isPositional(option))
        object.insert(QStringLiteral("name"), QString::fromStdString(option.get_name(true)));
    else
        object.insert(QStringLiteral("names"), toArray(typedNames(option)));
    return object;
}

QJsonArray optionsOf(const CLI::App &app, bool arePositional)
{
    QJsonArray array;
    for (const CLI::Option *option : app.get_options())
        if (isPositional(*option) == arePositional)
            array.append(toJson(*option));
    return array;
}

QJsonObject toJson(const CLI::App &app, const std::vector<std::string> &words)
{
    return {{QStringLiteral("words"), toArray(words)},
            {QStringLiteral("description"), QString::fromStdString(app.get_description())},
            {QStringLiteral("options"), optionsOf(app, false)},
            {QStringLiteral("positionals"), optionsOf(app, true)}};
}

void collect(const CLI::App &group, const std::vector<std::string> &words, QJsonArray &groups,
             QJsonArray &commands)
{
    for (const CLI::App *command : shownCommands(group)) {
        std::vector<std::string> all = words;
        all.push_back(command->get_name());
        const bool isGroup = command->get_require_subcommand_min() > 0;
        (isGroup ? groups : commands).append(toJson(*command, all));
        collect(*command, all, groups, commands);
    }
}

} // namespace

QJsonObject commandList(const CLI::App &program)
{
    QJsonArray groups;
    QJsonArray commands;
    collect(program, {}, groups, commands);
    QJsonObject object = toJson(program, {});
    object.insert(QStringLiteral("groups"), groups);
    object.insert(QStringLiteral("commands"), commands);
    return object;
}

} // namespace completion
