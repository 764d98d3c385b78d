// How the time of a synchronisation grows with the number of records, and where it goes: the whole
// is timed, then its settings reads, statements and events are done again, each kind by itself.

#include "Rollout.h"
#include "SettingsPeer.h"
#include "Shares.h"
#include "app/ZelProgrammableKeys.h"
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
    bool isJson = false;
};

// What a phone holds that was provisioned before.
void provision(const SettingsPeer &peer, int count)
{
    const Rollout rollout = makeRollout(count);
    peer.set(QStringLiteral("DefaultActions"), rollout.actions);
    peer.set(QStringLiteral("DefaultKeys"), rollout.keys);
    ProgKeysDatabase::instance().resetTables();
    ZelProgrammableKeys::instance()->syncDmDefaults();
    const auto made = ProgKeysDatabase::instance().allKeys().size();
    if (made != count)
        qFatal("The synchronisation made %d keys of %d", int(made), count);
}

// Sizes take turns, so that whatever else the machine does meets all of them.
std::map<int, Shares> measure(const SettingsPeer &peer, const Options &options)
{
    std::map<int, std::vector<Shares>> runs;
    for (int run = 0; run < options.runs; ++run) {
        for (const int count : options.records) {
            provision(peer, count);
            runs[count].push_back(measureSynchronisation(count));
        }
    }
    std::map<int, Shares> medians;
    for (const auto &[count, ofCount] : runs)
        medians[count] = medianOf(ofCount);
    return medians;
}

void printJson(const std::map<int, Shares> &medians)
{
    const char *separator = "[";
    for (const auto &[count, median] : medians) {
        std::printf("%s{\"records\": %d, \"seconds\": %.6f, \"settings\": %.4f, "
                    "\"statements\": %.4f, \"events\": %.4f}",
                    separator, count, median.whole, median.settings / median.whole,
                    median.statements / median.whole, median.events / median.whole);
        separator = ", ";
    }
    std::printf("]\n");
}

void printTable(const std::map<int, Shares> &medians)
{
    std::printf("%8s %10s %9s %10s %10s %10s %10s %11s\n", "records", "ms", "ms each", "settings",
                "statements", "events", "rest", "growth");
    double previous = 0;
    for (const auto &[count, median] : medians) {
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
    peer.set(QStringLiteral("ProgKeysMax"), QStringLiteral("100"));
    registerDBusKey();
    registerDBusAction();
    const std::map<int, Shares> medians = measure(peer, options);
    if (options.isJson)
        printJson(medians);
    else
        printTable(medians);
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
    commandLine.add_option("--runs", options.runs, "of which the median counts")
        ->check(CLI::Range(1, 1000));
    commandLine.add_flag("--json", options.isJson, "a list with one object a number of records");
    CLI11_PARSE(commandLine, argc, argv);

    // As the platform's own application object has it.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(argc, argv);
    application.setProperty("dataRoot", ZELApplication::dataRoot());
    run(options);
    return 0;
}
