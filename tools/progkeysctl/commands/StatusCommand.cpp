#include "commands/Commands.h"

#include "cli/Session.h"
#include "fields/Fields.h"
#include "text/Format.h"

#include <zelcore/ZELBusNames.h>

#include <QJsonArray>

#include <algorithm>

namespace commands {
namespace {

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
    row.insert("setKeys"_s, setKeys);
    row.insert("moduleKeys"_s, moduleKeys);
    row.insert("otherKeys"_s, static_cast<int>(keys.size()) - setKeys - moduleKeys);
    row.insert("provisionedKeys"_s, countIf(keys, isProvisioned<Key>));
}

void countActions(QJsonObject &row, const ListAction &actions)
{
    row.insert("userActions"_s, countIf(actions, fields::isUsers));
    row.insert("provisionedActions"_s, countIf(actions, isProvisioned<Action>));
}

// As the service reads it: without the setting there is no limit, and an invalid number is 0.
QJsonValue keyLimit(const client::ProgrammableKeys &service)
{
    const std::optional<QString> setting = service.setting("ProgKeysMax"_s);
    return setting ? QJsonValue(setting->toInt()) : QJsonValue();
}

ExitStatus status(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    const client::Bus &bus = session.bus();
    const client::ProgrammableKeys &service = session.service();
    const bool isRunning = service.isRunning();
    QJsonObject row = {
        {"running"_s, isRunning}, {"bus"_s, bus.choice().kind}, {"peers"_s, modulesOn(bus)}};
    if (!bus.choice().address.isEmpty())
        row.insert("busAddress"_s, bus.choice().address);
    if (isRunning) {
        countKeys(row, service.keys());
        countActions(row, service.actions());
        row.insert("limit"_s, keyLimit(service));
    }
    session.out().record(row);
    return isRunning ? ExitStatus::Done : ExitStatus::NotRunning;
}

} // namespace

cli::Command statusCommand()
{
    return cli::command("status", "show the state of the service", {},
                        {"running"_s, "bus"_s, "busAddress"_s, "setKeys"_s, "moduleKeys"_s,
                         "otherKeys"_s, "provisionedKeys"_s, "limit"_s, "userActions"_s,
                         "provisionedActions"_s, "peers"_s},
                        status);
}

} // namespace commands
