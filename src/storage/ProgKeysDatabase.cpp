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

// In development the application object has a property that overrides the phone's directory.
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

ProgKeysDatabase &ProgKeysDatabase::instance(const ZELModule &module)
{
    // Never freed: statements may run until the end of the process.
    static auto *const database = new ProgKeysDatabase(module);
    return *database;
}

// A failed open shows in every later statement. It is not tried again.
ProgKeysDatabase::ProgKeysDatabase(const ZELModule &module)
{
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

// One transaction, because a reset that a power cut interrupts would leave tables that pass the
// next check without the reserved action. If a step fails because of another process's lock, the
// whole reset is rolled back: the lock may be gone at the next step. After any other failure the
// remaining steps still run.
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
