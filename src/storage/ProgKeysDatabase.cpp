#include "storage/ProgKeysDatabase.h"

#include "logging.h"
#include "storage/Connection.h"
#include "storage/Schema.h"
#include "storage/Statement.h"

#include <zelcore/ZELModule.h>

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

// The replacement of the framework has a property for the data directory. The phone's framework
// does not have it.
QString dataRoot()
{
    const QString root = QCoreApplication::instance()->property("dataRoot").toString();
    return root.isEmpty() ? QStringLiteral("/data/ZELApplication/") : root;
}

bool failedForLock(const QSqlQuery &query)
{
    constexpr int kindOfError = 0xff;
    constexpr int busy = 5; // SQLITE_BUSY
    return (query.lastError().nativeErrorCode().toInt() & kindOfError) == busy;
}

// The destructor of the application object calls this, while the SQL library is still usable.
void closeConnection()
{
    Statement::forgetAll();
    connection::close();
}

} // namespace

ProgKeysDatabase &ProgKeysDatabase::instance(const ZELModule &module)
{
    // Never deleted, because statements may run until the end of the process.
    static auto *const database = new ProgKeysDatabase(module);
    return *database;
}

// If the file cannot be opened, all statements fail and log this. The file is not opened again.
ProgKeysDatabase::ProgKeysDatabase(const ZELModule &module)
{
    qAddPostRoutine(closeConnection);
    static_cast<void>(openConnection(module));
}

bool ProgKeysDatabase::openConnection(const ZELModule &module)
{
    const QString directory = dataRoot() + module.getModuleName() + QLatin1Char('/');
    const QString fileName = QStringLiteral("zelprogrammablekeys.data");
    logging::debug("Connecting to database at %1...", directory + fileName);
    return connection::open(directory, fileName);
}

bool ProgKeysDatabase::checkTables()
{
    QSqlQuery probe(QString(), QSqlDatabase{});
    if (!probe.exec(QLatin1String(schema::ProbeKeys))) {
        logging::info("Table Key is not correct. Check fails");
        return false;
    }
    if (!probe.exec(QLatin1String(schema::ProbeActions))) {
        logging::info("Table Action is not correct. Check fails");
        return false;
    }
    probe.finish(); // the journal mode cannot change while a statement reads
    connection::ensureDurable();
    return true;
}

// One transaction. Otherwise, an interrupted reset could leave tables that pass the next check but
// do not contain the reserved action. If a step fails because of a lock of another process, the
// whole reset is rolled back, because the next step may succeed. After another failure, the
// remaining steps still run, although SQLite may have rolled back the first steps.
void ProgKeysDatabase::resetTables()
{
    connection::ensureDurable();
    QSqlDatabase database = connection::current();
    const bool isOneUnit = database.transaction();
    bool isLocked = dropTables();
    isLocked |= runSteps({schema::CreateKeys, schema::CreateActions, schema::InsertReservedAction});
    if (!isOneUnit || (!isLocked && database.commit()))
        return;
    if (!isLocked)
        logging::error("Error: COMMIT %1", [&] { return database.lastError().text(); });
    database.rollback();
}

bool ProgKeysDatabase::dropTables()
{
    return runSteps({schema::DropKeys, schema::DropActions});
}

// After one step has waited for a lock, the other steps do not wait, because callers of
// restoreDefault usually wait only 25 s for the reply.
bool ProgKeysDatabase::runSteps(std::initializer_list<const char *> steps)
{
    bool isLocked = false;
    for (const char *sql : steps) {
        const bool isFirstLock = failedForLock(runStatement(QLatin1String(sql))) && !isLocked;
        if (isFirstLock)
            connection::waitForLocks(0);
        isLocked |= isFirstLock;
    }
    if (isLocked)
        connection::waitForLocks(connection::BusyMilliseconds);
    return isLocked;
}

QSqlQuery ProgKeysDatabase::runStatement(const QString &sql)
{
    return connection::run(sql);
}
