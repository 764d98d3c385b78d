#include "SettingsManager.h"

#include <zelcore/ZELApplication.h>

#include <CLI/CLI.hpp>

#include <string>

// Exceptions other than usage errors may end the process.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char **argv)
{
    CLI::App commandLine("Serves the settings in a directory as the SettingsManager of the phone.");
    std::string directory;
    commandLine.add_option("DIR", directory, "directory with one file for each setting")
        ->required()
        ->check(CLI::ExistingDirectory);
    CLI11_PARSE(commandLine, argc, argv);

    ZELApplication application(argc, argv);
    ZELApplication::setApplicationName(QStringLiteral("SettingsManager"));
    const SettingsManager module(QString::fromLocal8Bit(directory.c_str()));
    return ZELApplication::exec();
}
