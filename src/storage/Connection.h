#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <optional>

/// The default SQL connection, on one SQLite file.
namespace connection {

/// Opens the file, and creates its directory first if it does not exist. Returns whether the file
/// is open. A failed open is not logged.
bool open(const QString &directory, const QString &fileName);

/// Closes the connection, which leaves the single database file. No statement may be left.
void close();

/// The connection in its present state: a connection that could not be opened is not opened again.
QSqlDatabase current();

/// Executes a text. A failure is logged.
QSqlQuery run(const QString &text);

/// Executes a pragma or a query. Returns the first value, or an empty text if there is none;
/// nothing, after a log line, if it fails.
std::optional<QString> execute(const QString &text);

/// Logs a statement that failed. If the connection never opened, the query has neither a text nor
/// an error; `text` and the error of the connection are logged instead.
void logFailure(const QSqlQuery &query, const QString &text);

/// Ensures that a power cut cannot undo an acknowledged write. If another process has the file
/// locked, this fails: call it again before each write that begins a new use of the file.
void ensureDurable();

/// How long a statement waits for the lock of another process.
void waitForLocks(int milliseconds);
constexpr int BusyMilliseconds = 5000; ///< the default of the driver

/// The usual length of the write-ahead log, in pages (400 KiB): short enough for the phone's flash,
/// long enough that few writes pay for copying it into the database.
constexpr int CheckpointPages = 100;

/// Copies the write-ahead log into the database whenever it has that many pages.
void checkpointEvery(int pages);

/// Whether the file has a write-ahead log, which `ensureDurable` asks for.
bool usesWriteAheadLog();

} // namespace connection
