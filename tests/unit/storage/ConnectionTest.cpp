#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "support/LogCapture.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <zelcore/ZELModule.h>

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>

namespace {

/// As the service's own connection answers.
QVariant pragma(const char *name)
{
    QSqlQuery query(QString(), QSqlDatabase{});
    return query.exec(QStringLiteral("PRAGMA %1").arg(QLatin1String(name))) && query.next()
               ? query.value(0)
               : QVariant();
}

} // namespace

using Read = void (*)(ProgKeysDatabase &);
Q_DECLARE_METATYPE(Read)

class ConnectionTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void theFileIsNamedAfterTheModule();
    void laterUsesGetTheSameObjectAndDoNotConnectAgain();
    void theDefaultConnectionIsTheService();
    void aWriteIsDurable();
    void readsHoldNoLock_data();
    void readsHoldNoLock();

private:
    QStringList m_firstLines;
};

void ConnectionTest::initTestCase()
{
    const QString root = QCoreApplication::instance()->property("dataRoot").toString();
    QCoreApplication::instance()->setProperty("dataRoot", root + QStringLiteral("deep/down/"));
    QVERIFY(!QFileInfo::exists(root));
    unit::LogCapture log(7);
    unit::database();
    m_firstLines = log.take();
    QVERIFY(QFileInfo(OtherProgram::fileName()).isFile());
}

void ConnectionTest::theFileIsNamedAfterTheModule()
{
    QCOMPARE(unit::service().getModuleName(), QStringLiteral("ZelProgrammableKeys"));
    const QString file = OtherProgram::directory() + QStringLiteral("zelprogrammablekeys.data");
    QVERIFY(
        file.endsWith(QStringLiteral("/deep/down/ZelProgrammableKeys/zelprogrammablekeys.data")));
    QCOMPARE(m_firstLines,
             QStringList{QStringLiteral("debug: Connecting to database at %1...").arg(file)});
}

void ConnectionTest::laterUsesGetTheSameObjectAndDoNotConnectAgain()
{
    unit::LogCapture log(7);
    QCOMPARE(&unit::database(), &unit::database());
    QCOMPARE(log.take(), QStringList());
}

void ConnectionTest::theDefaultConnectionIsTheService()
{
    const QSqlDatabase database = QSqlDatabase::database();
    QCOMPARE(database.driverName(), QStringLiteral("QSQLITE"));
    QCOMPARE(database.databaseName(), OtherProgram::fileName());
    QVERIFY(database.isOpen());
}

void ConnectionTest::aWriteIsDurable()
{
    constexpr int full = 2;
    QCOMPARE(pragma("journal_mode").toString(), QStringLiteral("wal"));
    QCOMPARE(pragma("synchronous").toInt(), full);
    const int pages = pragma("wal_autocheckpoint").toInt();
    QVERIFY2(pages > 0 && pages < 1000, "the write-ahead log is not kept short");
}

void ConnectionTest::readsHoldNoLock_data()
{
    QTest::addColumn<Read>("read");
    const auto row = [](const char *name, Read read) { QTest::newRow(name) << read; };
    row("a key by its id", [](ProgKeysDatabase &database) { database.key(1); });
    row("all keys", [](ProgKeysDatabase &database) { database.allKeys(); });
    row("a count", [](ProgKeysDatabase &database) { database.countKeysOfType(44); });
    row("ids", [](ProgKeysDatabase &database) { database.keyIdsWithAction(22); });
    row("an action by its id", [](ProgKeysDatabase &database) { database.action(-1); });
    row("all actions", [](ProgKeysDatabase &database) { database.allActions(); });
    row("the check", [](ProgKeysDatabase &database) { database.checkTables(); });
}

void ConnectionTest::readsHoldNoLock()
{
    QFETCH(Read, read);
    ProgKeysDatabase &database = unit::database();
    database.resetTables();
    for (int number = 0; number < 3; ++number)
        database.insertKey(unit::sampleKey());
    read(database);
    const OtherProgram other;
    other.execute({QStringLiteral("PRAGMA busy_timeout = 0")});
    // A reader that still stands in the log keeps it from being folded back whole.
    QCOMPARE(other.value(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)")), QVariant(0));
}

PROGKEYS_TEST_MAIN(ConnectionTest)
#include "ConnectionTest.moc"
