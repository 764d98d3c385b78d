#include "storage/Connection.h"

#include "logging.h"

#include <QDir>
#include <QFile>
#include <QSqlError>
#include <QVariant>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace connection {
namespace {

bool hasWriteAheadLog = false;

// A write-ahead log requires memory that is shared through a file. Some file systems, such as
// JFFS2, do not support that. SQLite accepts the log there, but then all statements fail.
bool canShareMemory(const QString &fileName)
{
    const int descriptor = ::open(QFile::encodeName(fileName).constData(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0)
        return true; // the file cannot be written; the statements report this
    void *const page = ::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    const bool isShared = page != MAP_FAILED;
    if (isShared)
        ::munmap(page, 1);
    ::close(descriptor);
    return isShared;
}

const QLatin1String WriteAheadLog("wal");
const QLatin1String PersistentJournal("persist");

bool setJournal(const QLatin1String &mode)
{
    return execute(QStringLiteral("PRAGMA journal_mode=%1").arg(mode)) == QString(mode);
}

// Without shared memory, a file with a write-ahead log can be read only with an exclusive lock.
bool keepJournalAlone()
{
    execute(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
    const bool isKept = setJournal(PersistentJournal);
    execute(QStringLiteral("PRAGMA locking_mode=NORMAL"));
    return isKept;
}

// Returns whether the file now has a durable journal.
bool chooseJournal()
{
    // Check this before the database takes its first lock, because closing the file releases all
    // locks on it.
    static const bool isShareable = canShareMemory(current().databaseName());
    if (!isShareable)
        return keepJournalAlone();
    hasWriteAheadLog = setJournal(WriteAheadLog);
    if (hasWriteAheadLog)
        return true;
    // A process that reads prevents the change to a write-ahead log, but not to a persistent
    // journal. The first pragma has already waited for processes with an exclusive lock.
    waitForLocks(0);
    const bool isKept = setJournal(PersistentJournal);
    waitForLocks(BusyMilliseconds);
    return isKept;
}

} // namespace

QSqlDatabase current()
{
    return QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
}

void close()
{
    current().close();
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
}

void logFailure(const QSqlQuery &query, const QString &text)
{
    const auto executed = [&] {
        return query.executedQuery().isEmpty() ? text : query.executedQuery();
    };
    const auto reason = [&] {
        const QString error = query.lastError().text();
        return error.isEmpty() ? current().lastError().text() : error;
    };
    logging::error("Error: %1 %2", executed, reason);
}

QSqlQuery run(const QString &text)
{
    QSqlQuery query(QString(), QSqlDatabase{});
    query.setForwardOnly(true);
    if (!query.exec(text))
        logFailure(query, text);
    return query;
}

std::optional<QString> execute(const QString &text)
{
    QSqlQuery query = run(text);
    if (query.lastError().isValid())
        return std::nullopt;
    return query.next() ? query.value(0).toString() : QString();
}

void waitForLocks(int milliseconds)
{
    execute(QStringLiteral("PRAGMA busy_timeout=%1").arg(milliseconds));
}

bool open(const QString &directory, const QString &fileName)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(
        QStringLiteral("QSQLITE"), QLatin1String(QSqlDatabase::defaultConnection));
    const QDir place(directory);
    if (!place.exists())
        place.mkpath(place.absolutePath()); // if this fails, opening the file fails too
    database.setDatabaseName(directory + fileName);
    if (!database.open())
        return false;
    ensureDurable();
    return true;
}

// With SQLite's default journal, a power cut can undo an acknowledged write, because SQLite does
// not sync the directory after it deletes the journal. A write-ahead log and a persistent journal
// do not have this problem.
void ensureDurable()
{
    static bool isDurable = false;
    if (isDurable || !current().isOpen())
        return;
    isDurable = chooseJournal();
    if (!isDurable)
        return; // locked, or not a database
    execute(QStringLiteral("PRAGMA synchronous=FULL"));
    checkpointEvery(CheckpointPages);
}

void checkpointEvery(int pages)
{
    execute(QStringLiteral("PRAGMA wal_autocheckpoint=%1").arg(pages));
}

bool usesWriteAheadLog()
{
    return hasWriteAheadLog;
}

} // namespace connection
