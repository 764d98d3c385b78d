#include "storage/DeferredSync.h"

#include "storage/Connection.h"

namespace {

// Each copy of the log into the database costs two or three syncs, so it is done less often while
// syncs are deferred. 1000 pages (4 MiB) is SQLite's default.
constexpr int PagesWhileDeferred = 1000;

bool setSynchronous(const QString &mode)
{
    return connection::execute(QStringLiteral("PRAGMA synchronous=%1").arg(mode)).has_value();
}

// How many rows the connection has inserted, updated or deleted so far.
std::optional<QString> changesSoFar()
{
    return connection::execute(QStringLiteral("SELECT total_changes()"));
}

// Copies the log into the database, which syncs both, and empties it. False if another process uses
// the database, or after a log line.
bool copyLog()
{
    connection::waitForLocks(0);
    const std::optional<QString> isBusy =
        connection::execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    connection::waitForLocks(connection::BusyMilliseconds);
    return isBusy && *isBusy == QLatin1String("0");
}

// A write that is synced also syncs the log before it. This one writes a number back unchanged.
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

// The log is copied first, because that also repairs what a sync lost that failed meanwhile: the
// kernel reports such a failure only once, and the pages would never reach the disk. The copy is
// made from memory. A second try does so after a failure that the first one has met.
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
