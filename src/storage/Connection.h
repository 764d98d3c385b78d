#pragma once

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <optional>

/// The default SQL connection, which uses an SQLite file.
namespace connection {

/// Creates the directory if necessary, and opens the file. Returns whether the file is open. A
/// failure is not logged.
bool open(const QString &directory, const QString &fileName);

/// Closes the connection, after which the database consists of a single file. All statements must
/// be deleted before.
void close();

/// The connection. If it could not be opened, this does not open it again.
QSqlDatabase current();

/// Executes an SQL text. A failure is logged.
QSqlQuery run(const QString &text);

/// Executes a pragma or a query. Returns the first value, or an empty text if there is none. A
/// failure is logged and returns nothing.
std::optional<QString> execute(const QString &text);

/// Logs a failed statement. If the connection was never opened, the query has neither a text nor an
/// error. Then this logs `text` and the error of the connection.
void logFailure(const QSqlQuery &query, const QString &text);

/// Chooses a journal with which a power cut cannot undo an acknowledged write. This fails if
/// another process has locked the file. Therefore call it again before a reset and after a check.
void ensureDurable();

/// Sets how long a statement waits for a lock of another process.
void waitForLocks(int milliseconds);
constexpr int BusyMilliseconds = 5000; ///< the default of the driver

/// The usual length of the write-ahead log in pages (400 KiB). It is short enough for the phone's
/// flash, and long enough that few writes copy it into the database.
constexpr int CheckpointPages = 100;

/// Lets SQLite copy the write-ahead log into the database when it has that many pages.
void checkpointEvery(int pages);

/// Whether the file has a write-ahead log, which `ensureDurable` requests.
bool usesWriteAheadLog();

} // namespace connection
