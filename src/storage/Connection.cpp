#include "storage/Connection.h"

#include "storage/Statement.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <fcntl.h>
#include <optional>
#include <sys/mman.h>
#include <unistd.h>

namespace connection {
namespace {

// A write-ahead log of 100 pages (400 KiB) is folded back into the database: short enough for the
// phone's flash, long enough that few writes pay for it.
constexpr int CheckpointPages = 100;

// How long a statement waits for another process's lock; the driver's own default.
constexpr int BusyMilliseconds = 5000;

// What the pragma answers; nothing, after a log line, if it failed.
std::optional<QString> pragma(const QString &text)
{
    QSqlQuery query(QString(), QSqlDatabase{});
    query.setForwardOnly(true);
    if (!query.exec(text)) {
        logFailure(query, text);
        return std::nullopt;
    }
    return query.next() ? query.value(0).toString() : QString();
}

// A write-ahead log needs memory that processes share through a file. Some file systems, JFFS2 for
// one, cannot do that; SQLite takes the log there all the same, and then fails at every statement.
bool canShareMemory(const QString &fileName)
{
    const int descriptor = ::open(QFile::encodeName(fileName).constData(), O_RDWR | O_CLOEXEC);
    if (descriptor < 0)
        return true; // whatever is wrong, it is not this
    void *const page = ::mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    const bool isShared = page != MAP_FAILED;
    if (isShared)
        ::munmap(page, 1);
    ::close(descriptor);
    return isShared;
}

// A file that has a log already can be read without shared memory by its only user.
bool keepJournalAlone()
{
    pragma(QStringLiteral("PRAGMA locking_mode=EXCLUSIVE"));
    const auto mode = pragma(QStringLiteral("PRAGMA journal_mode=PERSIST"));
    pragma(QStringLiteral("PRAGMA locking_mode=NORMAL"));
    return mode.has_value();
}

// Whether the choice is the last one.
bool chooseJournal()
{
    // Found out before the database takes its first lock: closing the file drops all locks on it.
    static const bool isShareable = canShareMemory(current().databaseName());
    if (!isShareable)
        return keepJournalAlone();
    const auto mode = pragma(QStringLiteral("PRAGMA journal_mode=WAL"));
    if (mode && *mode == QLatin1String("wal"))
        return true;
    // Another process that reads keeps the log from being taken, but not the journal from being
    // kept; one that lets nobody read has been waited for already.
    pragma(QStringLiteral("PRAGMA busy_timeout=0"));
    pragma(QStringLiteral("PRAGMA journal_mode=PERSIST"));
    pragma(QStringLiteral("PRAGMA busy_timeout=%1").arg(BusyMilliseconds));
    return mode.has_value();
}

// Closing folds the write-ahead log back, which leaves the single database file. The application
// object runs this as it goes, while the SQL library is still whole.
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

bool open(const QString &directory, const QString &fileName)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(
        QStringLiteral("QSQLITE"), QLatin1String(QSqlDatabase::defaultConnection));
    qAddPostRoutine(close);

    const QDir place(directory);
    if (!place.exists())
        place.mkpath(place.absolutePath()); // where this fails, so does opening the file
    database.setDatabaseName(directory + fileName);
    if (!database.open())
        return false;
    ensureDurable();
    return true;
}

// With SQLite's default journal a power cut can undo an acknowledged write, because the unlinked
// journal's directory is not synced. A write-ahead log, or a journal that is kept, cannot.
void ensureDurable()
{
    static bool isDurable = false;
    if (isDurable)
        return;
    isDurable = chooseJournal();
    if (!isDurable)
        return; // locked, or no database at all
    pragma(QStringLiteral("PRAGMA synchronous=FULL"));
    pragma(QStringLiteral("PRAGMA wal_autocheckpoint=%1").arg(CheckpointPages));
}

} // namespace connection
