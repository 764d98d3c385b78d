#include "SettingsDirectory.h"

#include "support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

class SettingsDirectoryTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        QVERIFY(m_directory->isValid());
    }

    void oneNewlineAtTheEndIsDropped_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("value");
        QTest::newRow("no newline") << QByteArray("12") << QStringLiteral("12");
        QTest::newRow("one newline") << QByteArray("12\n") << QStringLiteral("12");
        QTest::newRow("two newlines") << QByteArray("12\n\n") << QStringLiteral("12\n");
        QTest::newRow("nothing but a newline") << QByteArray("\n") << QStringLiteral("");
        QTest::newRow("nothing at all") << QByteArray("") << QStringLiteral("");
        QTest::newRow("a newline within") << QByteArray("1\n2\n") << QStringLiteral("1\n2");
        QTest::newRow("blanks at the end") << QByteArray("12 \n") << QStringLiteral("12 ");
    }

    void oneNewlineAtTheEndIsDropped()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, value);
        put(QStringLiteral("setting"), text);
        const auto found = SettingsDirectory(m_directory->path()).read(QStringLiteral("setting"));
        QVERIFY(found.has_value());
        QCOMPARE(*found, value);
    }

    void aFileIsReadAfresh()
    {
        const SettingsDirectory settings(m_directory->path());
        put(QStringLiteral("setting"), "1");
        QCOMPARE(settings.read(QStringLiteral("setting")).value_or(QString()), QStringLiteral("1"));
        put(QStringLiteral("setting"), "2");
        QCOMPARE(settings.read(QStringLiteral("setting")).value_or(QString()), QStringLiteral("2"));
    }

    void aTextComesBackAsItWasWritten_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("a number") << QStringLiteral("100");
        QTest::newRow("an empty text") << QStringLiteral("");
        QTest::newRow("newlines at the end") << QStringLiteral("a\n\n");
        QTest::newRow("a text beyond ASCII") << QString::fromUtf8("Grüße 電話 \U0001F4DE");
    }

    void aTextComesBackAsItWasWritten()
    {
        QFETCH(QString, text);
        const SettingsDirectory settings(m_directory->path());
        QVERIFY(settings.write(QStringLiteral("setting"), text));
        const auto found = settings.read(QStringLiteral("setting"));
        QVERIFY(found.has_value());
        QCOMPARE(*found, text);
    }

    void aWriteReplacesTheFileAndLeavesNoOther()
    {
        const SettingsDirectory settings(m_directory->path());
        QVERIFY(settings.write(QStringLiteral("setting"), QStringLiteral("a long first value")));
        QVERIFY(settings.write(QStringLiteral("setting"), QStringLiteral("short")));
        QCOMPARE(settings.read(QStringLiteral("setting")).value_or(QString()),
                 QStringLiteral("short"));
        QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("setting")});
    }

    void anUnknownSettingIsNothing()
    {
        put(QStringLiteral("setting"), "1");
        const SettingsDirectory settings(m_directory->path());
        QVERIFY(!settings.read(QStringLiteral("Setting")).has_value());
        QVERIFY(!settings.read(QStringLiteral("setting ")).has_value());
    }

    void aNameThatLeadsElsewhereIsRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("an empty name") << QString();
        QTest::newRow("the directory itself") << QStringLiteral(".");
        QTest::newRow("the directory above") << QStringLiteral("..");
        QTest::newRow("a file above") << QStringLiteral("../outside");
        QTest::newRow("a file below") << QStringLiteral("below/setting");
        QTest::newRow("a file elsewhere") << QStringLiteral("/etc/hostname");
        QTest::newRow("a hidden file") << QStringLiteral(".hidden");
    }

    void aNameThatLeadsElsewhereIsRefused()
    {
        QFETCH(QString, name);
        QVERIFY(QDir(m_directory->path()).mkpath(QStringLiteral("settings/below")));
        put(QStringLiteral("outside"), "secret");
        put(QStringLiteral("settings/below/setting"), "secret");
        put(QStringLiteral("settings/.hidden"), "secret");
        const SettingsDirectory settings(path(QStringLiteral("settings")));
        QVERIFY(!settings.read(name).has_value());
        QVERIFY(!settings.write(name, QStringLiteral("new")));
        QFile outside(path(QStringLiteral("outside")));
        QVERIFY(outside.open(QIODevice::ReadOnly));
        QCOMPARE(outside.readAll(), QByteArray("secret"));
    }

    void aDirectoryThatIsNotThereIsNoPlaceToWrite()
    {
        const SettingsDirectory settings(path(QStringLiteral("missing")));
        QVERIFY(!settings.write(QStringLiteral("setting"), QStringLiteral("1")));
        QVERIFY(!settings.read(QStringLiteral("setting")).has_value());
    }

private:
    QString path(const QString &name) const { return m_directory->filePath(name); }

    void put(const QString &name, const QByteArray &text) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(text), qint64{text.size()});
    }

    std::unique_ptr<QTemporaryDir> m_directory;
};

PROGKEYS_TEST(SettingsDirectoryTest)
#include "SettingsDirectoryTest.moc"
