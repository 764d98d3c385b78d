#include "FileLocks.h"

#include "support/LockedFile.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <memory>

namespace {

int openFiles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd")).entryList().size());
}

} // namespace

/// The process that keeps others from reading the files of a directory.
class FileLocksTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void nobodyHoldsAnything_data();
    void nobodyHoldsAnything();
    void anExclusiveLockOfAnotherProcessIsFound_data();
    void anExclusiveLockOfAnotherProcessIsFound();
    void aLockThatLetsOthersReadDoesNotCount();
    void aFileIsClosedAgainOrKeptOpen();
    void theLocksOfThisProcessDoNotCountAndAreKept();

private:
    QString path(const QString &name) const { return m_place->filePath(name); }
    void put(const QString &name) const;
    std::optional<pid_t> holder(zel::Afterwards afterwards = zel::Afterwards::KeepOpen) const;
    std::unique_ptr<QProcess> otherProcess(const QString &name, const QString &kind) const;

    std::unique_ptr<QTemporaryDir> m_place;
};

void FileLocksTest::init()
{
    m_place = std::make_unique<QTemporaryDir>();
    QVERIFY(m_place->isValid());
}

void FileLocksTest::put(const QString &name) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
}

std::optional<pid_t> FileLocksTest::holder(zel::Afterwards afterwards) const
{
    return zel::exclusiveLockHolder(path(QStringLiteral("Module")), afterwards);
}

// Holds a lock on the file until its input ends, and says so once it does.
std::unique_ptr<QProcess> FileLocksTest::otherProcess(const QString &name,
                                                      const QString &kind) const
{
    auto process = std::make_unique<QProcess>();
    const QString program = QStringLiteral("import fcntl, sys\n"
                                           "file = open(sys.argv[1], 'r+')\n"
                                           "fcntl.lockf(file, fcntl.%1)\n"
                                           "print('locked', flush=True)\n"
                                           "sys.stdin.read()\n")
                                .arg(kind);
    process->start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), program, path(name)});
    return process->waitForReadyRead() ? std::move(process) : nullptr;
}

void FileLocksTest::nobodyHoldsAnything_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("no directory") << QString();
    QTest::newRow("a file") << QStringLiteral("Module/a");
    QTest::newRow("a file further down") << QStringLiteral("Module/sub/a");
}

void FileLocksTest::nobodyHoldsAnything()
{
    QFETCH(QString, file);
    if (!file.isEmpty())
        put(file);
    QVERIFY(!holder());
}

void FileLocksTest::anExclusiveLockOfAnotherProcessIsFound_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("kind");
    const QString whole = QStringLiteral("LOCK_EX");
    QTest::newRow("on the only file") << QStringLiteral("Module/a") << whole;
    QTest::newRow("on a hidden file") << QStringLiteral("Module/.a") << whole;
    QTest::newRow("on a file further down") << QStringLiteral("Module/sub/a") << whole;
    QTest::newRow("on one byte beyond 2 GiB")
        << QStringLiteral("Module/a") << QStringLiteral("LOCK_EX, 1, 3 << 30");
}

void FileLocksTest::anExclusiveLockOfAnotherProcessIsFound()
{
    QFETCH(QString, file);
    QFETCH(QString, kind);
    put(QStringLiteral("Module/other"));
    put(file);
    const auto process = otherProcess(file, kind);
    QVERIFY(process);
    for (const auto afterwards : {zel::Afterwards::Close, zel::Afterwards::KeepOpen}) {
        const auto found = holder(afterwards);
        QVERIFY(found);
        QCOMPARE(qint64{*found}, process->processId());
    }
    process->closeWriteChannel();
    QVERIFY(process->waitForFinished());
    QVERIFY(!holder());
}

void FileLocksTest::aLockThatLetsOthersReadDoesNotCount()
{
    put(QStringLiteral("Module/a"));
    const auto process = otherProcess(QStringLiteral("Module/a"), QStringLiteral("LOCK_SH"));
    QVERIFY(process);
    QVERIFY(!holder());
    process->closeWriteChannel();
    QVERIFY(process->waitForFinished());
}

void FileLocksTest::aFileIsClosedAgainOrKeptOpen()
{
    put(QStringLiteral("Module/a"));
    const auto before = openFiles();
    QVERIFY(!holder(zel::Afterwards::Close));
    QCOMPARE(openFiles(), before);
    QVERIFY(!holder(zel::Afterwards::KeepOpen));
    QCOMPARE(openFiles(), before + 1);
}

void FileLocksTest::theLocksOfThisProcessDoNotCountAndAreKept()
{
    put(QStringLiteral("Module/a"));
    const unit::LockedFile locked(path(QStringLiteral("Module/a")), F_WRLCK);
    QVERIFY(locked.isHeld());
    QVERIFY(!holder());
    QProcess other;
    const QString program =
        QStringLiteral("import fcntl, sys\n"
                       "fcntl.lockf(open(sys.argv[1], 'r+'), fcntl.LOCK_EX | fcntl.LOCK_NB)\n");
    other.start(QStringLiteral("/usr/bin/python3"),
                {QStringLiteral("-c"), program, path(QStringLiteral("Module/a"))});
    QVERIFY(other.waitForFinished());
    QVERIFY(other.exitCode() != 0);
}

PROGKEYS_TEST_MAIN(FileLocksTest)
#include "FileLocksTest.moc"
