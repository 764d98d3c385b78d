#include "commands/Commands.h"

#include "fields/Fields.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QThread>

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

constexpr double WaitSeconds = 30;
constexpr unsigned long PollMs = 20;

void waitFor(cli::Session &session, const QString &module)
{
    const QDeadlineTimer deadline(session.timeoutMs(WaitSeconds));
    while (!session.phone().isRunning(module)) {
        if (deadline.hasExpired())
            throw Failure{ExitStatus::TimeRanOut,
                          format("%1 is not running on %2", module, session.phone().busName()),
                          "See its log, or allow more time with --timeout."_s};
        QThread::msleep(PollMs);
    }
}

void wait(cli::Session &session, const cli::Arguments &arguments)
{
    const QString module = arguments.has("MODULE") ? arguments.text("MODULE") : client::Service;
    waitFor(session, module);
    // In scripts, another command often prints its results next.
    if (session.out().isForPeople())
        output::note(format("%1 is running.", module));
    else
        session.out().record({{"running"_s, true}});
}

// The reserved action is not counted.
QString contentOf(const client::Phone &phone, QJsonObject &row)
{
    const int keys = static_cast<int>(phone.keys().size());
    const int actions = static_cast<int>(phone.actions().size()) - 1;
    row.insert("keys"_s, keys);
    row.insert("actions"_s, actions);
    return format("%1 and %2", text::counted(keys, "key"_s), text::counted(actions, "action"_s));
}

void runRestore(const client::Phone &phone, const QString &method)
{
    try {
        phone.runHook(method);
    } catch (Failure &failure) {
        if (failure.status == ExitStatus::TimeRanOut)
            failure.advice =
                "The restore may still be running: see \"progkeysctl status\". Allow more time "
                "with --timeout."_s;
        throw;
    }
}

void restore(cli::Session &session, const cli::Arguments &arguments)
{
    const QString what = arguments.text("default|factory");
    QJsonObject row = {{"restored"_s, what}};
    if (!arguments.has("--yes"))
        throw Failure{
            ExitStatus::Usage,
            format("This deletes %1, including those of users", contentOf(session.phone(), row)),
            "Confirm with --yes. \"progkeysctl export\" saves the keys and actions of users."_s};
    runRestore(session.phone(), what == "factory"_s ? "restoreFactory"_s : "restoreDefault"_s);
    const QString content = contentOf(session.phone(), row);
    session.out().done(format("Restored the provisioned defaults: %1.", content), row);
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

cli::Command waitCommand()
{
    return cli::command(
        "wait", "wait until the service is running, for up to 30 s or --timeout",
        {cli::parameter("[MODULE]", "another module of the phone, such as SettingsManager",
                        cli::check::notEmpty)},
        {"running"_s}, wait);
}

cli::Command restoreCommand()
{
    return cli::command("restore",
                        "delete all keys and actions and restore the provisioned defaults",
                        {cli::parameter("default|factory",
                                        "the state to restore; both do the same in this service"),
                         cli::parameter("--yes", "confirm the deletion")},
                        {"restored"_s, "keys"_s, "actions"_s}, restore);
}

} // namespace commands
