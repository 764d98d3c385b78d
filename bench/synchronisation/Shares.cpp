#include "Shares.h"

#include "events/Notifications.h"
#include "module/ZelProgrammableKeys.h"
#include "provisioning/SettingsReader.h"
#include "storage/ProgKeysDatabase.h"

#include <QElapsedTimer>

#include <algorithm>
#include <functional>

namespace {

// Small rollouts are synchronised again and again, so that every run takes about as long and meets
// as much of whatever else the machine does.
constexpr int RecordsOfARun = 1000;

double secondsOf(int times, const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < times; ++i)
        work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9 / times;
}

// The reads of one synchronisation: both texts, and the limit once a key.
void readSettings(int count)
{
    SettingsReader &settings = SettingsReader::instance(module());
    settings.getSettingValue(QStringLiteral("DefaultActions"));
    settings.getSettingValue(QStringLiteral("DefaultKeys"));
    for (int i = 0; i < count; ++i)
        settings.getSettingValue(QStringLiteral("ProgKeysMax"));
}

void runStatements()
{
    ProgKeysDatabase &database = ProgKeysDatabase::instance(module());
    const ListKey keys = database.allKeys();
    const ListAction actions = database.allActions();
    for (const Action &action : actions) {
        database.action(action.idAction);
        database.updateAction(action);
    }
    database.deleteProvisionedKeys();
    for (const Key &key : keys) {
        database.actionWithDmId(key.dmId);
        database.action(key.idAction);
        database.countKeysOfType(KeyType::Set);
        database.insertKey(key);
    }
}

void sendEvents(const ListKey &keys, const ListAction &actions)
{
    const Notifications notifications(module());
    for (const Action &action : actions) {
        ZELEvent event;
        notifications.actionModified(event, action);
    }
    for (const Key &key : keys) {
        ZELEvent created;
        notifications.keyCreated(created, key);
        ZELEvent icon;
        notifications.setModuleIcon(icon, placeOf(key), 0, 0);
    }
}

double medianOf(const std::vector<Shares> &runs, double Shares::*figure)
{
    std::vector<double> values;
    values.reserve(runs.size());
    for (const Shares &run : runs)
        values.push_back(run.*figure);
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

} // namespace

Shares measureSynchronisation(int count)
{
    const int times = std::max(1, RecordsOfARun / count);
    ProgKeysDatabase &database = ProgKeysDatabase::instance(module());
    Shares shares;
    shares.whole = secondsOf(times, [] { module().syncDmDefaults(); });
    const ListKey keys = database.allKeys();
    ListAction actions = database.allActions();
    actions.removeFirst(); // the reserved one is not provisioned
    shares.settings = secondsOf(times, [count] { readSettings(count); });
    shares.statements = secondsOf(times, runStatements);
    shares.events = secondsOf(times, [&] { sendEvents(keys, actions); });
    return shares;
}

Shares medianOf(const std::vector<Shares> &runs)
{
    return {medianOf(runs, &Shares::whole), medianOf(runs, &Shares::settings),
            medianOf(runs, &Shares::statements), medianOf(runs, &Shares::events)};
}
