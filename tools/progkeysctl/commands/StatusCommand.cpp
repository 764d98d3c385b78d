#include "commands/Commands.h"

#include "fields/Fields.h"
#include "text/Format.h"

#include <QJsonArray>

#include <algorithm>

namespace commands {
namespace {

template <typename Record, typename Predicate>
int countIf(const QList<Record> &records, Predicate predicate)
{
    return static_cast<int>(std::count_if(records.begin(), records.end(), predicate));
}

// As the service reads it: without the setting there is no limit, and an invalid number is 0.
QJsonValue keyLimit(const client::Phone &phone)
{
    const std::optional<QString> setting = phone.setting("ProgKeysMax"_s);
    return setting ? QJsonValue(setting->toInt()) : QJsonValue();
}

void addCounts(QJsonObject &row, const client::Phone &phone)
{
    const ListKey keys = phone.keys();
    const ListAction actions = phone.actions();
    const auto isProvisioned = [](const auto &record) { return !record.dmId.isEmpty(); };
    const auto countType = [&keys](int type) {
        return countIf(keys, [type](const Key &key) { return key.type == type; });
    };
    const int setKeys = countType(KeyType::Set);
    const int moduleKeys = countType(KeyType::AddOnModule);
    row.insert("setKeys"_s, setKeys);
    row.insert("moduleKeys"_s, moduleKeys);
    row.insert("otherKeys"_s, static_cast<int>(keys.size()) - setKeys - moduleKeys);
    row.insert("provisionedKeys"_s, countIf(keys, isProvisioned));
    row.insert("limit"_s, keyLimit(phone));
    row.insert("userActions"_s, countIf(actions, fields::isUsers));
    row.insert("provisionedActions"_s, countIf(actions, isProvisioned));
}

void status(cli::Session &session, const cli::Arguments & /*arguments*/)
{
    const client::Phone &phone = session.phone();
    const bool isRunning = phone.isRunning(client::Service);
    QJsonObject row = {{"running"_s, isRunning},
                       {"bus"_s, phone.choice().kind},
                       {"peers"_s, QJsonArray::fromStringList(phone.modules())}};
    if (!phone.choice().address.isEmpty())
        row.insert("busAddress"_s, phone.choice().address);
    if (isRunning)
        addCounts(row, phone);
    session.out().record(row);
    if (!isRunning)
        session.exitWith(ExitStatus::NotRunning);
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
