#include "commands/Commands.h"

#include "cli/Session.h"
#include "fields/Fields.h"

#include <zelcore/ZELBusNames.h>

#include <QJsonArray>

#include <algorithm>

namespace commands {
namespace {

QList<output::Column> columns()
{
    QList<output::Column> columns;
    for (const char *name :
         {"running", "bus", "busAddress", "setKeys", "moduleKeys", "otherKeys", "provisionedKeys",
          "limit", "userActions", "provisionedActions", "peers"})
        columns.append({QString::fromLatin1(name)});
    return columns;
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

template <typename Record>
bool isProvisioned(const Record &record)
{
    return !record.dmId.isEmpty();
}

void countKeys(QJsonObject &row, const ListKey &keys)
{
    const int setKeys = countIf(keys, [](const Key &key) { return key.type == KeyType::Set; });
    const int moduleKeys =
        countIf(keys, [](const Key &key) { return key.type == KeyType::AddOnModule; });
    row.insert(QStringLiteral("setKeys"), setKeys);
    row.insert(QStringLiteral("moduleKeys"), moduleKeys);
    row.insert(QStringLiteral("otherKeys"), static_cast<int>(keys.size()) - setKeys - moduleKeys);
    row.insert(QStringLiteral("provisionedKeys"), countIf(keys, isProvisioned<Key>));
}

void countActions(QJsonObject &row, const ListAction &actions)
{
    row.insert(QStringLiteral("userActions"), countIf(actions, fields::isUsers));
    row.insert(QStringLiteral("provisionedActions"), countIf(actions, isProvisioned<Action>));
}

// As the service reads it: without the setting there is no limit, and an invalid number is 0.
QJsonValue keyLimit(const client::ProgrammableKeys &service)
{
    const std::optional<QString> setting = service.setting(QStringLiteral("ProgKeysMax"));
    return setting ? QJsonValue(setting->toInt()) : QJsonValue();
}

ExitStatus status(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    const client::Bus &bus = session.bus();
    const client::ProgrammableKeys &service = session.service();
    const bool isRunning = service.isRunning();
    const QList<output::Column> all = columns();
    QJsonObject row;
    for (const output::Column &column : all)
        row.insert(column.name, QJsonValue());
    row.insert(QStringLiteral("running"), isRunning);
    row.insert(QStringLiteral("bus"), bus.choice().kind);
    if (!bus.choice().address.isEmpty())
        row.insert(QStringLiteral("busAddress"), bus.choice().address);
    row.insert(QStringLiteral("peers"), modulesOn(bus));
    if (isRunning) {
        countKeys(row, service.keys());
        countActions(row, service.actions());
        row.insert(QStringLiteral("limit"), keyLimit(service));
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
