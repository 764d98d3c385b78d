#pragma once

#include <QString>

namespace sandbox {

/// Where the programs of a phone are.
struct Executables
{
    QString bus;
    QString settingsManager;
    QString service;
};

/// The directory of this program.
QString ownDirectory();

/// Looks in the directory, else beside this program and then on the PATH; dbus-daemon is on the
/// PATH always. Throws a Failure if one is missing.
Executables findExecutables(const QString &directory);

} // namespace sandbox
