#pragma once

#include <QSqlDatabase>
#include <QString>

#include <optional>

/// The default SQL connection, on one SQLite file.
namespace connection {

/// Opens the file, and creates its directory first if it does not exist. Returns whether the file
/// is open. Logs nothing.
bool open(const QString &directory, const QString &fileName);

/// The connection in its present state: a connection that could not be opened is not opened again.
QSqlDatabase current();

/// Executes a pragma or a query. Returns the first value, or an empty text if there is none;
/// nothing, after a log line, if it fails.
std::optional<QString> execute(const QString &text);

/// Ensures that a power cut cannot undo an acknowledged write. `open` calls it; if the file was
/// locked at that time, call it again before the first write.
void ensureDurable();

/// The usual length of the write-ahead log, in pages (400 KiB): short enough for the phone's flash,
/// long enough that few writes pay for copying it into the database.
constexpr int CheckpointPages = 100;

/// Copies the write-ahead log into the database whenever it has that many pages.
void checkpointEvery(int pages);

/// Whether the file has a write-ahead log, which `ensureDurable` asks for.
bool usesWriteAheadLog();

} // namespace connection
