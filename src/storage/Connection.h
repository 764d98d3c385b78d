#pragma once

#include <QString>

/// The default SQL connection, on one SQLite file.
namespace connection {

/// Opens the file, and its directory first if need be. Returns whether that worked; it writes no
/// log line about it.
bool open(const QString &directory, const QString &fileName);

} // namespace connection
