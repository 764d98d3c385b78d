#include "InstanceLock.h"

#include "support/TestProgram.h"

#include <QDir>
#include <QTemporaryDir>

#include <memory>

/// The lock on a module's directory. Two locks of one process exclude each other like those of two.
class InstanceLockTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_place = std::make_unique<QTemporaryDir>();
        QVERIFY(m_place->isValid());
    }

    void aLockKeepsOthersOutUntilItIsReleased()
    {
        const QString module = made(QStringLiteral("Module"));
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
        const QString module = made(QStringLiteral("Module"));
        {
            zel::InstanceLock lock;
            QVERIFY(lock.acquire(module));
            QVERIFY(isFree(made(QStringLiteral("Other"))));
        }
        QVERIFY(isFree(module));
    }

    void aDirectoryThatAppearsIsLockedByTheNextCall()
    {
        zel::InstanceLock lock;
        QVERIFY(lock.acquire(path(QStringLiteral("Module"))));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Module"))));
        const QString module = made(QStringLiteral("Module"));
        QVERIFY(isFree(module));
        QVERIFY(lock.acquire(module));
        QVERIFY(!isFree(module));
    }

    void aDirectoryThatIsReplacedIsLockedByTheNextCall()
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

    void aRefusedLockKeepsTheFormerDirectory()
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

private:
    QString path(const QString &name) const { return m_place->filePath(name); }
    QString made(const QString &name) const
    {
        if (!QDir().mkpath(path(name)))
            qFatal("Cannot make a directory");
        return path(name);
    }
    static bool isFree(const QString &directory) { return zel::InstanceLock().acquire(directory); }

    std::unique_ptr<QTemporaryDir> m_place;
};

PROGKEYS_TEST(InstanceLockTest)
#include "InstanceLockTest.moc"
