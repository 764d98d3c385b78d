#include "storage/DeferredSync.h"

#include "storage/Connection.h"

namespace {

// Copying the log into the database costs two or three syncs, so this happens less often while
// syncs are deferred. 1000 pages (4 MiB) is SQLite's default.
constexpr int PagesWhileDeferred = 1000;

bool setSynchronous(const QString &mode)
{
    return connection::execute(QStringLiteral("PRAGMA synchronous=%1").arg(mode)).has_value();
}

// The number of rows that the connection has inserted, updated or deleted so far.
std::optional<QString> changesSoFar()
{
    return connection::execute(QStringLiteral("SELECT total_changes()"));
}

// Copies the log into the database, which syncs both, and empties the log. Returns false if another
// process uses the database, or after an error, which is logged.
bool copyLog()
{
    connection::waitForLocks(0);
    const std::optional<QString> isBusy =
        connection::execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    connection::waitForLocks(connection::BusyMilliseconds);
    return isBusy && *isBusy == QLatin1String("0");
}

// A synced write also syncs the earlier contents of the log. This writes an unchanged number.
void syncLog()
{
    const std::optional<QString> version =
        connection::execute(QStringLiteral("PRAGMA user_version"));
    if (version)
        connection::execute(QStringLiteral("PRAGMA user_version=%1").arg(*version));
}

} // namespace

DeferredSync::DeferredSync()
    : m_isDeferred(connection::usesWriteAheadLog() && setSynchronous(QStringLiteral("NORMAL")))
{
    if (!m_isDeferred)
        return;
    connection::checkpointEvery(PagesWhileDeferred);
    m_changes = changesSoFar();
}

// The log is copied first. This also writes the pages of an earlier failed sync again: the kernel
// reports such a failure only once and would not write the pages again. The copy is made from
// memory. If the first copy reports the failure, the second one writes the pages.
DeferredSync::~DeferredSync()
{
    if (!m_isDeferred)
        return;
    setSynchronous(QStringLiteral("FULL"));
    connection::checkpointEvery(connection::CheckpointPages);
    const bool isUnchanged = m_changes && m_changes == changesSoFar();
    if (!isUnchanged && !copyLog() && !copyLog())
        syncLog();
}
