#include "storage/Connection.h"

#include "storage/Statement.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace connection {
namespace {

// How long a statement waits for the lock of another process; the default of the driver.
constexpr int BusyMilliseconds = 5000;

bool hasWriteAheadLog = false;

// A write-ahead log needs memory that is shared through a file. Some file systems, such as JFFS2,
// do not support that: SQLite still accepts the log there, and then fails at every statement.
bool canShareMemory(const QString &fileName)
{
    const int descriptor = ::open(QFile::encodeName(fileName).constData(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0)
        return true; // another fault, which opening the file reports
    void *const page = ::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    const bool isShared = page != MAP_FAILED;
    if (isShared)
        ::munmap(page, 1);
    ::close(descriptor);
    return isShared;
}

// Without shared memory, a file that already has a log can be read only under an exclusive lock.
bool keepJournalAlone()
{
    execute(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
    const auto mode = execute(QStringLiteral("PRAGMA journal_mode=PERSIST"));
    execute(QStringLiteral("PRAGMA locking_mode=NORMAL"));
    return mode.has_value();
}

// Returns whether the choice is final.
bool chooseJournal()
{
    // Tested before the database takes its first lock: closing the file drops all locks on it.
    static const bool isShareable = canShareMemory(current().databaseName());
    if (!isShareable)
        return keepJournalAlone();
    const auto mode = execute(QStringLiteral("PRAGMA journal_mode=WAL"));
    hasWriteAheadLog = mode == QStringLiteral("wal");
    if (hasWriteAheadLog)
        return true;
    // A process that reads prevents the change to a log, but not a persistent journal. The first
    // pragma has already waited for a process that holds an exclusive lock.
    execute(QStringLiteral("PRAGMA busy_timeout=0"));
    execute(QStringLiteral("PRAGMA journal_mode=PERSIST"));
    execute(QStringLiteral("PRAGMA busy_timeout=%1").arg(BusyMilliseconds));
    return mode.has_value();
}

// Closing copies the write-ahead log back, which leaves the single database file. The application
// object calls this in its destructor, while the SQL library is still usable.
void close()
{
    Statement::forgetAll();
    current().close();
    QSqlDatabase::removeDatabase(QLatin1String(QSqlDatabase::defaultConnection));
}

} // namespace

QSqlDatabase current()
{
    return QSqlDatabase::database(QLatin1String(QSqlDatabase::defaultConnection), false);
}

std::optional<QString> execute(const QString &text)
{
    QSqlQuery query(QString(), QSqlDatabase{});
    query.setForwardOnly(true);
    if (!query.exec(text)) {
        logFailure(query, text);
        return std::nullopt;
    }
    return query.next() ? query.value(0).toString() : QString();
}

bool open(const QString &directory, const QString &fileName)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(
        QStringLiteral("QSQLITE"), QLatin1String(QSqlDatabase::defaultConnection));
    qAddPostRoutine(close);

    const QDir place(directory);
    if (!place.exists())
        place.mkpath(place.absolutePath()); // if this fails, opening the file fails too
    database.setDatabaseName(directory + fileName);
    if (!database.open())
        return false;
    ensureDurable();
    return true;
}

// With SQLite's default journal a power cut can undo an acknowledged write, because SQLite does not
// sync the directory after it deletes the journal. A write-ahead log and a persistent journal do
// not have this fault.
void ensureDurable()
{
    static bool isDurable = false;
    if (isDurable)
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
