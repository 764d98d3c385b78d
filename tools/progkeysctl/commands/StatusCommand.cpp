#include "commands/StatusCommand.h"

#include "cli/Session.h"
#include "client/Settings.h"
#include "fields/Fields.h"

#include <zelcore/ZELBusNames.h>

#include <QJsonArray>

#include <algorithm>

namespace commands {
namespace {

QList<output::Column> columns()
{
    return {{QStringLiteral("running"), QStringLiteral("Service running")},
            {QStringLiteral("bus"), QStringLiteral("Bus")},
            {QStringLiteral("setKeys"), QStringLiteral("Keys of the set"), true},
            {QStringLiteral("moduleKeys"), QStringLiteral("Keys on add-on modules"), true},
            {QStringLiteral("otherKeys"), QStringLiteral("Keys of other types"), true},
            {QStringLiteral("provisionedKeys"), QStringLiteral("Provisioned keys"), true},
            {QStringLiteral("limit"), QStringLiteral("Most keys of the set"), true},
            {QStringLiteral("userActions"), QStringLiteral("Actions of users"), true},
            {QStringLiteral("provisionedActions"), QStringLiteral("Provisioned actions"), true},
            {QStringLiteral("peers"), QStringLiteral("Modules on the bus")}};
}

QJsonArray modulesOn(const client::Bus &bus)
{
    const QString prefix = zel::serviceName(QString());
    QJsonArray modules;
    const QStringList names = bus.names();
    for (const QString &name : names)
        if (name.startsWith(prefix))
            modules.append(name.mid(prefix.size()));
    return modules;
}

template <typename Record, typename Predicate>
int countIf(const QList<Record> &records, Predicate predicate)
{
    return static_cast<int>(std::count_if(records.begin(), records.end(), predicate));
}

void countKeys(QJsonObject &row, const ListKey &keys)
{
    const auto ofType = [&keys](int type) {
        return countIf(keys, [type](const Key &key) { return key.type == type; });
    };
    const int setKeys = ofType(KeyType::Set);
    const int moduleKeys = ofType(KeyType::AddOnModule);
    row.insert(QStringLiteral("setKeys"), setKeys);
    row.insert(QStringLiteral("moduleKeys"), moduleKeys);
    row.insert(QStringLiteral("otherKeys"), static_cast<int>(keys.size()) - setKeys - moduleKeys);
    row.insert(QStringLiteral("provisionedKeys"),
               countIf(keys, [](const Key &key) { return !key.dmId.isEmpty(); }));
}

void countActions(QJsonObject &row, const ListAction &actions)
{
    row.insert(QStringLiteral("userActions"), countIf(actions, fields::isUsers));
    row.insert(QStringLiteral("provisionedActions"),
               countIf(actions, [](const Action &action) { return !action.dmId.isEmpty(); }));
}

// As the service takes it: no setting, no limit; a text that is no number is 0.
QJsonValue keyLimit(const client::Bus &bus)
{
    const std::optional<QString> setting = client::readSetting(bus, QStringLiteral("ProgKeysMax"));
    return setting ? QJsonValue(setting->toInt()) : QJsonValue();
}

ExitStatus status(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    const client::Bus &bus = session.bus();
    const bool isRunning = session.service().isRunning();
    QJsonObject row{{QStringLiteral("running"), isRunning},
                    {QStringLiteral("bus"), bus.description()},
                    {QStringLiteral("peers"), modulesOn(bus)}};
    if (isRunning) {
        countKeys(row, session.service().keys());
        countActions(row, session.service().actions());
        row.insert(QStringLiteral("limit"), keyLimit(bus));
    }
    session.out().record(columns(), row);
    return isRunning ? ExitStatus::Done : ExitStatus::NotRunning;
}

} // namespace

cli::Command statusCommand()
{
    return cli::command("status", "tell whether the service is there and what it holds", {},
                        status);
}

} // namespace commands
