// How the time of a synchronisation grows with the number of records, and where it goes: the whole
// is timed, then its settings reads, statements and events are done again, each kind by itself.

#include "Rollout.h"
#include "SettingsPeer.h"
#include "app/ZelProgrammableKeys.h"
#include "events/Notifications.h"
#include "provisioning/SettingsReader.h"
#include "storage/ProgKeysDatabase.h"

#include <zelcore/ZELApplication.h>

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

constexpr int Runs = 5;

double medianMs(const std::function<void()> &work)
{
    std::vector<double> times;
    for (int run = 0; run < Runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times.at(Runs / 2);
}

// The reads of one synchronisation: both texts, and the limit once a key.
void readSettings(int count)
{
    SettingsReader &settings = SettingsReader::instance();
    settings.getSettingValue(QStringLiteral("DefaultActions"));
    settings.getSettingValue(QStringLiteral("DefaultKeys"));
    for (int i = 0; i < count; ++i)
        settings.getSettingValue(QStringLiteral("ProgKeysMax"));
}

void runStatements()
{
    ProgKeysDatabase &database = ProgKeysDatabase::instance();
    const ListKey keys = database.allKeys();
    const ListAction actions = database.allActions();
    for (const Action &action : actions) {
        database.action(action.idAction);
        database.updateAction(action);
    }
    database.deleteProvisionedKeys();
    for (const Key &key : keys) {
        database.actionsWithDmId(key.dmId);
        database.action(key.idAction);
        database.countKeysOfType(KeyType::Set);
        database.insertKey(key);
    }
}

void sendEvents(const ListKey &keys, const ListAction &actions)
{
    for (const Action &action : actions) {
        ZELEvent event;
        events::actionModified(event, action);
    }
    for (const Key &key : keys) {
        ZELEvent created;
        events::keyCreated(created, key);
        ZELEvent icon;
        events::setModuleIcon(icon, events::placeOf(key), 0, 0);
    }
}

void bench(const SettingsPeer &peer, int count, double &previous)
{
    const Rollout rollout = makeRollout(count);
    peer.set(QStringLiteral("DefaultActions"), rollout.actions);
    peer.set(QStringLiteral("DefaultKeys"), rollout.keys);
    ProgKeysDatabase &database = ProgKeysDatabase::instance();
    database.resetTables();
    ZelProgrammableKeys::instance()->syncDmDefaults();
    const ListKey keys = database.allKeys();
    if (keys.size() != count)
        qFatal("The synchronisation made %d keys of %d", int(keys.size()), count);

    const double whole = medianMs([] { ZelProgrammableKeys::instance()->syncDmDefaults(); });
    const double settings = medianMs([count] { readSettings(count); });
    const double statements = medianMs([] { runStatements(); });
    ListAction actions = database.allActions();
    actions.removeFirst(); // the reserved one is not provisioned
    const double sending = medianMs([&] { sendEvents(keys, actions); });
    const double rest = std::max(0.0, whole - settings - statements - sending);
    std::printf("%8d %10.2f %9.3f %9.0f%% %9.0f%% %9.0f%% %9.0f%%", count, whole, whole / count,
                100 * settings / whole, 100 * statements / whole, 100 * sending / whole,
                100 * rest / whole);
    if (previous > 0)
        std::printf(" %9.1f x", whole / previous);
    std::printf("\n");
    previous = whole;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    application.setProperty("dataRoot", ZELApplication::dataRoot());
    if (argc != 2)
        qFatal("usage: bench_synchronisation SETTINGSMANAGER");
    const SettingsPeer peer(QString::fromLocal8Bit(argv[1]));
    peer.set(QStringLiteral("ProgKeysMax"), QStringLiteral("100"));
    registerDBusKey();
    registerDBusAction();

    std::printf("A synchronisation that updates every action and makes every key anew; median of "
                "%d.\n%8s %10s %9s %10s %10s %10s %10s %11s\n",
                Runs, "records", "ms", "ms each", "settings", "statements", "events", "rest",
                "growth");
    double previous = 0;
    for (const int count : {10, 100, 1000})
        bench(peer, count, previous);
    return 0;
}
