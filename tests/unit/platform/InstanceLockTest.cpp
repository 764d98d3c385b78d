#include "InstanceLock.h"

#include "support/TestProgram.h"

#include <QDir>
#include <QTemporaryDir>

#include <memory>

/// The lock on a module's directory. Two locks of one process exclude each other like the locks of
/// two processes.
class InstanceLockTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(m_root->isValid());
    }

    void aLockExcludesOtherLocksUntilItIsReleased()
    {
        const QString module = created(QStringLiteral("Module"));
        zel::InstanceLock lock;
        for (int round = 0; round < 2; ++round) {
            QVERIFY(lock.acquire(module));
            QVERIFY(lock.acquire(module));
            QVERIFY(!isFree(module));
            lock.release();
            QVERIFY(isFree(module));
        }
    }

    void aLockEndsWithItsObject()
    {
        const QString module = created(QStringLiteral("Module"));
        {
            zel::InstanceLock lock;
            QVERIFY(lock.acquire(module));
            QVERIFY(isFree(created(QStringLiteral("Other"))));
        }
        QVERIFY(isFree(module));
    }

    void aNewDirectoryIsLockedByTheNextCall()
    {
        zel::InstanceLock lock;
        QVERIFY(lock.acquire(path(QStringLiteral("Module"))));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Module"))));
        const QString module = created(QStringLiteral("Module"));
        QVERIFY(isFree(module));
        QVERIFY(lock.acquire(module));
        QVERIFY(!isFree(module));
    }

    void aReplacedDirectoryIsLockedByTheNextCall()
    {
        const QString module = created(QStringLiteral("Module"));
        zel::InstanceLock lock;
        QVERIFY(lock.acquire(module));
        QVERIFY(QDir().rename(module, path(QStringLiteral("Aside"))));
        QVERIFY(isFree(created(QStringLiteral("Module"))));
        QVERIFY(lock.acquire(module));
        QVERIFY(!isFree(module));
        QVERIFY(isFree(path(QStringLiteral("Aside"))));
    }

    void aFailedLockKeepsTheLockOfThePreviousDirectory()
    {
        zel::InstanceLock lock;
        zel::InstanceLock other;
        QVERIFY(lock.acquire(created(QStringLiteral("Module"))));
        QVERIFY(other.acquire(created(QStringLiteral("Other"))));
        QVERIFY(!lock.acquire(path(QStringLiteral("Other"))));
        QVERIFY(!isFree(path(QStringLiteral("Module"))));
        other.release();
        QVERIFY(isFree(path(QStringLiteral("Other"))));
    }

private:
    QString path(const QString &name) const { return m_root->filePath(name); }
    QString created(const QString &name) const
    {
        if (!QDir().mkpath(path(name)))
            qFatal("Cannot create a directory");
        return path(name);
    }
    static bool isFree(const QString &directory) { return zel::InstanceLock().acquire(directory); }

    std::unique_ptr<QTemporaryDir> m_root;
};

PROGKEYS_TEST(InstanceLockTest)
#include "InstanceLockTest.moc"
