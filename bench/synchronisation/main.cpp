// How the time of a synchronisation grows with the number of records, and where it goes: the whole
// is timed, then its settings reads, statements and events are done again, each kind by itself.

#include "Rollout.h"
#include "SettingsPeer.h"
#include "Shares.h"
#include "module/ZelProgrammableKeys.h"
#include "storage/ProgKeysDatabase.h"

#include <zelcore/ZELApplication.h>

#include <CLI/CLI.hpp>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

struct Options
{
    std::string settingsManager;
    std::vector<int> records = {10, 100, 1000};
    int runs = 7;
    Keys kind = Keys::OfModules;
    bool isJson = false;
};

/// By number of records, each run's.
using Measured = std::map<int, std::vector<Shares>>;

// What a phone holds that was provisioned before.
void provision(const SettingsPeer &peer, int count, Keys kind)
{
    const Rollout rollout = makeRollout(count, kind);
    peer.set(QStringLiteral("DefaultActions"), rollout.actions);
    peer.set(QStringLiteral("DefaultKeys"), rollout.keys);
    ProgKeysDatabase::instance(module()).resetTables();
    module().syncDmDefaults();
    const auto made = ProgKeysDatabase::instance(module()).allKeys().size();
    if (made != count)
        qFatal("The synchronisation made %d keys of %d", int(made), count);
}

// Sizes take turns, in an order that rotates, so that whatever else the machine does meets all of
// them.
Measured measure(const SettingsPeer &peer, const Options &options)
{
    Measured measured;
    std::vector<int> sizes = options.records;
    for (int run = 0; run < options.runs; ++run) {
        for (const int count : sizes) {
            provision(peer, count, options.kind);
            measured[count].push_back(measureSynchronisation(count));
        }
        std::rotate(sizes.begin(), sizes.begin() + 1, sizes.end());
    }
    return measured;
}

void printJson(const Measured &measured)
{
    const char *separator = "[";
    for (const auto &[count, runs] : measured) {
        int number = 0;
        for (const Shares &run : runs) {
            std::printf("%s{\"run\": %d, \"records\": %d, \"seconds\": %.6f, "
                        "\"settings\": %.4f, \"statements\": %.4f, \"events\": %.4f}",
                        separator, number++, count, run.whole, run.settings / run.whole,
                        run.statements / run.whole, run.events / run.whole);
            separator = ",\n ";
        }
    }
    std::printf("]\n");
}

void printTable(const Measured &measured)
{
    std::printf("%8s %10s %9s %10s %10s %10s %10s %11s\n", "records", "ms", "ms each", "settings",
                "statements", "events", "rest", "growth");
    double previous = 0;
    for (const auto &[count, runs] : measured) {
        const Shares median = medianOf(runs);
        const double rest =
            std::max(0.0, median.whole - median.settings - median.statements - median.events);
        std::printf("%8d %10.2f %9.3f", count, median.whole * 1e3, median.whole * 1e3 / count);
        for (const double share : {median.settings, median.statements, median.events, rest})
            std::printf(" %9.0f%%", 100 * share / median.whole);
        if (previous > 0)
            std::printf(" %9.1f x", median.whole / previous);
        std::printf("\n");
        previous = median.whole;
    }
}

void run(const Options &options)
{
    const SettingsPeer peer(QString::fromStdString(options.settingsManager));
    peer.set(QStringLiteral("ProgKeysMax"), QStringLiteral("1000000"));
    registerDBusKey();
    registerDBusAction();
    const Measured measured = measure(peer, options);
    if (options.isJson)
        printJson(measured);
    else
        printTable(measured);
}

} // namespace

// What is not an error of usage may end the process.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char **argv)
{
    Options options;
    CLI::App commandLine("Times a synchronisation that updates every action and makes every key "
                         "anew, in memory and on the bus that is there.");
    commandLine.add_option("SETTINGSMANAGER", options.settingsManager, "the peer's program")
        ->required();
    commandLine.add_option("--records", options.records, "how many actions, and as many keys");
    commandLine.add_option("--runs", options.runs, "how often each")->check(CLI::Range(1, 1000));
    bool isOfSet = false;
    commandLine.add_flag("--set-keys", isOfSet, "keys of the set, instead of add-on modules");
    commandLine.add_flag("--json", options.isJson, "a list with one object a run");
    CLI11_PARSE(commandLine, argc, argv);

    options.kind = isOfSet ? Keys::OfSet : Keys::OfModules;
    // As the platform's own application object has it.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    application.setProperty("dataRoot", ZELApplication::dataRoot());
    run(options);
    return 0;
}
