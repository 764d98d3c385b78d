#include "storage/ProgKeysDatabase.h"

#include "logging.h"
#include "module.h"
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

// The application object says where the phone's data is if it was told so, as in development.
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

} // namespace

ProgKeysDatabase &ProgKeysDatabase::instance()
{
    // Never freed: statements may run until the very end of the process.
    static auto *const database = new ProgKeysDatabase;
    return *database;
}

// A failed open shows in every later statement; it is not tried again.
ProgKeysDatabase::ProgKeysDatabase()
{
    static_cast<void>(openConnection());
}

bool ProgKeysDatabase::openConnection()
{
    const QString directory = dataRoot() + theModule().getModuleName() + QLatin1Char('/');
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
    probe.finish(); // the journal cannot be chosen while a statement reads
    connection::ensureDurable();
    return true;
}

// In one transaction, because a phone that is unplugged in the middle would pass its next check
// without the reserved action. A step that fails does not keep the others from being done, unless
// it fails for another process's lock, which may be gone at the next step: then all is left as it
// was.
void ProgKeysDatabase::resetTables()
{
    QSqlDatabase database = connection::current();
    const bool isOneUnit = database.transaction();
    bool isLocked = dropTables();
    for (const char *sql :
         {schema::CreateKeys, schema::CreateActions, schema::InsertReservedAction})
        isLocked |= failedForLock(runStatement(QLatin1String(sql)));
    if (!isOneUnit || (!isLocked && database.commit()))
        return;
    if (!isLocked)
        logging::error("Error: COMMIT %1", [&] { return database.lastError().text(); });
    database.rollback();
}

bool ProgKeysDatabase::dropTables()
{
    const bool areKeysLocked = failedForLock(runStatement(QLatin1String(schema::DropKeys)));
    return failedForLock(runStatement(QLatin1String(schema::DropActions))) || areKeysLocked;
}

QSqlQuery ProgKeysDatabase::runStatement(const QString &sql)
{
    QSqlQuery query(QString(), QSqlDatabase{});
    query.setForwardOnly(true);
    if (!query.exec(sql))
        logFailure(query, sql);
    return query;
}
