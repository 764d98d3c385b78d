#include "commands/Commands.h"

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
            {QStringLiteral("busAddress"), QStringLiteral("Bus address")},
            {QStringLiteral("setKeys"), QStringLiteral("Keys on the set"), true},
            {QStringLiteral("moduleKeys"), QStringLiteral("Keys on add-on modules"), true},
            {QStringLiteral("otherKeys"), QStringLiteral("Keys of other types"), true},
            {QStringLiteral("provisionedKeys"), QStringLiteral("Provisioned keys"), true},
            {QStringLiteral("limit"), QStringLiteral("Key limit"), true},
            {QStringLiteral("userActions"), QStringLiteral("User actions"), true},
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

// As the service reads it: without the setting there is no limit, and an invalid number is 0.
QJsonValue keyLimit(const client::Bus &bus)
{
    const std::optional<QString> setting = client::readSetting(bus, QStringLiteral("ProgKeysMax"));
    return setting ? QJsonValue(setting->toInt()) : QJsonValue();
}

ExitStatus status(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    const client::Bus &bus = session.bus();
    const bool isRunning = session.service().isRunning();
    QJsonObject row;
    const QList<output::Column> all = columns();
    for (const output::Column &column : all)
        row.insert(column.name, QJsonValue());
    row.insert(QStringLiteral("running"), isRunning);
    row.insert(QStringLiteral("bus"), bus.kind());
    if (!bus.address().isEmpty())
        row.insert(QStringLiteral("busAddress"), bus.address());
    row.insert(QStringLiteral("peers"), modulesOn(bus));
    if (isRunning) {
        countKeys(row, session.service().keys());
        countActions(row, session.service().actions());
        row.insert(QStringLiteral("limit"), keyLimit(bus));
    }
    session.out().record(all, row);
    return isRunning ? ExitStatus::Done : ExitStatus::NotRunning;
}

} // namespace

cli::Command statusCommand()
{
    return cli::command("status", "show the state of the service", {}, status);
}

} // namespace commands
