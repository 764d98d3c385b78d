#include "DataDirectory.h"

#include "support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <memory>

/// The data directory of a module and its copies.
class DataDirectoryTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QVERIFY(m_root->isValid());
    }

    void onlyANonEmptyFileIsData_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isData");
        QTest::newRow("no directory") << QString() << QByteArray() << false;
        QTest::newRow("an empty file") << QStringLiteral("Module/a") << QByteArray() << false;
        QTest::newRow("a file") << QStringLiteral("Module/a") << QByteArray("x") << true;
        QTest::newRow("a hidden file") << QStringLiteral("Module/.a") << QByteArray("x") << true;
        QTest::newRow("a file in a subdirectory")
            << QStringLiteral("Module/sub/sub/a") << QByteArray("x") << true;
        QTest::newRow("a file in another directory")
            << QStringLiteral("Module.old/a") << QByteArray("x") << false;
    }

    void onlyANonEmptyFileIsData()
    {
        QFETCH(QString, file);
        QFETCH(QByteArray, text);
        QFETCH(bool, isData);
        if (!file.isEmpty())
            put(file, text);
        QCOMPARE(zel::DataDirectory(path(QStringLiteral("Module"))).holdsData(), isData);
    }

    void aCopyHasTheSameFiles()
    {
        const QStringList files{QStringLiteral("a"), QStringLiteral(".hidden"),
                                QStringLiteral("sub/empty"), QString::fromUtf8("sub/Grüße")};
        for (const QString &file : files)
            put(QStringLiteral("Module/") + file,
                file.endsWith(QLatin1Char('y')) ? "" : file.toUtf8());
        const QString copy = zel::DataDirectory(path(QStringLiteral("Module"))).copyAside();
        QCOMPARE(copy, path(QStringLiteral("Module.before-deploy")));
        for (const QString &file : files) {
            QFile copied(copy + QLatin1Char('/') + file);
            QVERIFY(copied.open(QIODevice::ReadOnly));
            QCOMPARE(copied.readAll(),
                     file.endsWith(QLatin1Char('y')) ? QByteArray() : file.toUtf8());
            QVERIFY(QFileInfo::exists(path(QStringLiteral("Module/") + file)));
        }
    }

    void eachCopyGetsAnUnusedName()
    {
        const zel::DataDirectory directory(path(QStringLiteral("Module")));
        for (const char *number : {"", ".1", ".2"}) {
            const QString copy =
                path(QStringLiteral("Module.before-deploy") + QLatin1String(number));
            put(QStringLiteral("Module/a"), number);
            QCOMPARE(directory.copyAside(), copy);
            QFile copied(copy + QStringLiteral("/a"));
            QVERIFY(copied.open(QIODevice::ReadOnly));
            QCOMPARE(copied.readAll(), QByteArray(number));
        }
    }

    void theSameDataIsNotCopiedTwice()
    {
        const zel::DataDirectory directory(path(QStringLiteral("Module")));
        put(QStringLiteral("Module/sub/a"), "first");
        const QString first = directory.copyAside();
        QCOMPARE(directory.copyAside(), first);
        put(QStringLiteral("Module/sub/a"), "second");
        const QString second = directory.copyAside();
        QVERIFY(second != first);
        QCOMPARE(directory.copyAside(), second);
        QCOMPARE(QDir(m_root->path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 3);
    }

    void theNameOfADanglingLinkIsNotUsed()
    {
        put(QStringLiteral("Module/a"), "x");
        for (const char *suffix : {".before-deploy", ".unusable"})
            QVERIFY(QFile::link(path(QStringLiteral("nowhere")),
                                path(QStringLiteral("Module") + QLatin1String(suffix))));
        put(QStringLiteral("Elsewhere/a"), "kept");
        QVERIFY(
            QFile::link(path(QStringLiteral("Elsewhere")), path(QStringLiteral("Module.copying"))));
        const zel::DataDirectory directory(path(QStringLiteral("Module")));
        QCOMPARE(directory.copyAside(), path(QStringLiteral("Module.before-deploy.1")));
        QVERIFY(QFileInfo::exists(path(QStringLiteral("Elsewhere/a"))));
        QCOMPARE(directory.setAside(), path(QStringLiteral("Module.unusable.1")));
    }

    void anIncompleteCopyIsReplaced()
    {
        put(QStringLiteral("Module/a"), "x");
        put(QStringLiteral("Module.copying/b"), "incomplete");
        const QString copy = zel::DataDirectory(path(QStringLiteral("Module"))).copyAside();
        QCOMPARE(copy, path(QStringLiteral("Module.before-deploy")));
        QVERIFY(!QFileInfo::exists(path(QStringLiteral("Module.copying"))));
        QVERIFY(!QFileInfo::exists(copy + QStringLiteral("/b")));
    }

    void aFailedCopyLeavesNothingBehind()
    {
        // The name of the copy is longer than the file system allows.
        const QString name(245, QLatin1Char('m'));
        put(name + QStringLiteral("/a"), "x");
        QCOMPARE(zel::DataDirectory(path(name)).copyAside(), QString());
        QCOMPARE(QDir(m_root->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{name});
        QVERIFY(zel::DataDirectory(path(name)).holdsData());
    }

    void aDirectoryIsSetAsideWithAnUnusedName()
    {
        const zel::DataDirectory directory(path(QStringLiteral("Module")));
        for (const char *number : {"", ".1", ".2"}) {
            put(QStringLiteral("Module/a"), number);
            const QString aside = path(QStringLiteral("Module.unusable") + QLatin1String(number));
            QCOMPARE(directory.setAside(), aside);
            QFile moved(aside + QStringLiteral("/a"));
            QVERIFY(moved.open(QIODevice::ReadOnly));
            QCOMPARE(moved.readAll(), QByteArray(number));
            QVERIFY(!QFileInfo::exists(directory.path()));
        }
    }

    void aMissingDirectoryIsNotSetAside()
    {
        QCOMPARE(zel::DataDirectory(path(QStringLiteral("Module"))).setAside(), QString());
        QCOMPARE(QDir(m_root->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());
    }

private:
    QString path(const QString &name) const { return m_root->filePath(name); }

    void put(const QString &name, const QByteArray &text) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), qint64{text.size()});
    }

    std::unique_ptr<QTemporaryDir> m_root;
};

PROGKEYS_TEST(DataDirectoryTest)
#include "DataDirectoryTest.moc"
