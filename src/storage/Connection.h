#pragma once

#include <QSqlDatabase>
#include <QString>

/// The default SQL connection, on one SQLite file.
namespace connection {

/// Opens the file, and its directory first if need be. Returns whether that worked; it writes no
/// log line about it.
bool open(const QString &directory, const QString &fileName);

/// The connection as it is: one that could not be opened is not opened again.
QSqlDatabase current();

/// Makes sure that a write, once it has succeeded, outlives a power cut. `open` does that; where
/// the file was locked then, it is to be done again before anything is written.
void ensureDurable();

} // namespace connection
