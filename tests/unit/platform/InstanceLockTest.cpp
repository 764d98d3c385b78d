#include "InstanceLock.h"

#include "support/TestMain.h"

#include <QDir>
#include <QProcess>

#include <memory>

/// The lock on a module's directory. Two locks of one process exclude each other like those of two.
class InstanceLockTest : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void aLockKeepsOthersOutUntilItIsReleased();
    void aLockEndsWithItsObject();
    void lockingTwiceChangesNothing();
    void anotherDirectoryIsFree();
    void aDirectoryThatDoesNotExistIsNotLocked();
    void aDirectoryThatAppearsIsLockedByTheNextCall();
    void aDirectoryThatIsReplacedIsLockedByTheNextCall();
    void aRefusedLockKeepsTheFormerDirectory();
    void aChildProcessDoesNotKeepTheLock();

private:
    QString path(const QString &name) const { return m_place->filePath(name); }
    QString made(const QString &name) const;
    static bool isFree(const QString &directory) { return zel::InstanceLock().acquire(directory); }

    std::unique_ptr<QTemporaryDir> m_place;
};

void InstanceLockTest::init()
{
    m_place = std::make_unique<QTemporaryDir>();
    QVERIFY(m_place->isValid());
}

QString InstanceLockTest::made(const QString &name) const
{
    if (!QDir().mkpath(path(name)))
        qFatal("Cannot make a directory");
    return path(name);
}

void InstanceLockTest::aLockKeepsOthersOutUntilItIsReleased()
{
    const QString module = made(QStringLiteral("Module"));
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(module));
    QVERIFY(!isFree(module));
    lock.release();
    QVERIFY(isFree(module));
    QVERIFY(lock.acquire(module));
    QVERIFY(!isFree(module));
}

void InstanceLockTest::aLockEndsWithItsObject()
{
    const QString module = made(QStringLiteral("Module"));
    {
        zel::InstanceLock lock;
        QVERIFY(lock.acquire(module));
    }
    QVERIFY(isFree(module));
}

void InstanceLockTest::lockingTwiceChangesNothing()
{
    const QString module = made(QStringLiteral("Module"));
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(module));
    QVERIFY(lock.acquire(module));
    QVERIFY(!isFree(module));
}

void InstanceLockTest::anotherDirectoryIsFree()
{
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(made(QStringLiteral("Module"))));
    QVERIFY(isFree(made(QStringLiteral("Other"))));
    QVERIFY(isFree(m_place->path()));
}

void InstanceLockTest::aDirectoryThatDoesNotExistIsNotLocked()
{
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(path(QStringLiteral("Module"))));
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("Module"))));
    QVERIFY(isFree(made(QStringLiteral("Module"))));
}

void InstanceLockTest::aDirectoryThatAppearsIsLockedByTheNextCall()
{
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(path(QStringLiteral("Module"))));
    const QString module = made(QStringLiteral("Module"));
    QVERIFY(lock.acquire(module));
    QVERIFY(!isFree(module));
}

void InstanceLockTest::aDirectoryThatIsReplacedIsLockedByTheNextCall()
{
    const QString module = made(QStringLiteral("Module"));
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(module));
    QVERIFY(QDir().rename(module, path(QStringLiteral("Aside"))));
    QVERIFY(isFree(made(QStringLiteral("Module"))));
    QVERIFY(lock.acquire(module));
    QVERIFY(!isFree(module));
    QVERIFY(isFree(path(QStringLiteral("Aside"))));
}

void InstanceLockTest::aRefusedLockKeepsTheFormerDirectory()
{
    zel::InstanceLock lock;
    zel::InstanceLock other;
    QVERIFY(lock.acquire(made(QStringLiteral("Module"))));
    QVERIFY(other.acquire(made(QStringLiteral("Other"))));
    QVERIFY(!lock.acquire(path(QStringLiteral("Other"))));
    QVERIFY(!isFree(path(QStringLiteral("Module"))));
    other.release();
    QVERIFY(isFree(path(QStringLiteral("Other"))));
}

void InstanceLockTest::aChildProcessDoesNotKeepTheLock()
{
    const QString module = made(QStringLiteral("Module"));
    zel::InstanceLock lock;
    QVERIFY(lock.acquire(module));
    QProcess child;
    child.start(QStringLiteral("cat"), QStringList());
    QVERIFY(child.waitForStarted());
    lock.release();
    QVERIFY(isFree(module));
    QCOMPARE(child.state(), QProcess::Running);
    child.closeWriteChannel();
    QVERIFY(child.waitForFinished());
}

PROGKEYS_TEST_MAIN(InstanceLockTest)
#include "InstanceLockTest.moc"
