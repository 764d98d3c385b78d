#include "planning/PlanFiles.h"
#include "outcome/Failure.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>

using defaults::PlanReading;
using defaults::PlanSources;

/// Where the settings of a plan come from.
class PlanFilesTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void aFileGoesBeforeTheDirectoryAndThatBeforeThePhone();
    void oneNewlineAtTheEndIsDropped();
    void whatIsMissingCountsAsEmptyAndIsTold();
    void theLimitIsReadAsTheServiceReadsIt_data();
    void theLimitIsReadAsTheServiceReadsIt();
    void aFileThatCannotBeUsedIsAFailure_data();
    void aFileThatCannotBeUsedIsAFailure();

private:
    QString write(const QString &name, const QByteArray &bytes);
    PlanReading read(const PlanSources &sources);

    std::optional<QTemporaryDir> m_directory;
    QStringList m_askedOfThePhone;
};

void PlanFilesTest::init()
{
    m_directory.emplace();
    QVERIFY(m_directory->isValid());
    m_askedOfThePhone.clear();
}

QString PlanFilesTest::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_directory->filePath(name);
    QFile file(path);
    const bool isWritten = QDir().mkpath(QFileInfo(path).path()) &&
                           file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    return isWritten ? path : QString();
}

PlanReading PlanFilesTest::read(const PlanSources &sources)
{
    return defaults::readSettings(sources, [this](const QString &name) {
        m_askedOfThePhone.append(name);
        return std::optional<QString>(QStringLiteral("7"));
    });
}

void PlanFilesTest::aFileGoesBeforeTheDirectoryAndThatBeforeThePhone()
{
    PlanSources sources;
    sources.files = QStringList{write(QStringLiteral("my-keys.txt"), "from a file")};
    QCOMPARE(read(sources).settings.keys, QStringLiteral("from a file"));
    QCOMPARE(m_askedOfThePhone, (QStringList{defaults::ActionsSetting, defaults::LimitSetting}));

    write(QStringLiteral("dir/DefaultActions"), "from the directory");
    write(QStringLiteral("dir/DefaultKeys"), "from the directory");
    m_askedOfThePhone.clear();
    sources.directory = m_directory->filePath(QStringLiteral("dir"));
    const PlanReading reading = read(sources);
    QCOMPARE(reading.settings.actions, QStringLiteral("from the directory"));
    QCOMPARE(reading.settings.keys, QStringLiteral("from a file"));
    QVERIFY(!reading.settings.limit);
    QCOMPARE(m_askedOfThePhone, QStringList());
}

void PlanFilesTest::oneNewlineAtTheEndIsDropped()
{
    PlanSources sources;
    sources.actions = write(QStringLiteral("a"), "one\n");
    sources.keys = write(QStringLiteral("b"), "two\n\n");
    QCOMPARE(read(sources).settings.actions, QStringLiteral("one"));
    QCOMPARE(read(sources).settings.keys, QStringLiteral("two\n"));
}

void PlanFilesTest::whatIsMissingCountsAsEmptyAndIsTold()
{
    PlanSources sources;
    sources.directory = m_directory->path();
    const PlanReading reading = read(sources);
    QCOMPARE(reading.settings.actions, QString());
    QCOMPARE(reading.settings.keys, QString());
    QVERIFY(!reading.settings.limit);
    QCOMPARE(reading.warnings.size(), 3);
    QCOMPARE(reading.warnings.first().message,
             m_directory->path() + QStringLiteral(" has no setting DefaultActions: it counts as "
                                                  "empty"));
    QCOMPARE(reading.warnings.last().message,
             m_directory->path() + QStringLiteral(" has no setting ProgKeysMax: nothing limits the "
                                                  "keys of the set"));
}

void PlanFilesTest::theLimitIsReadAsTheServiceReadsIt_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("limit");
    QTest::newRow("a number") << QByteArray("24\n") << 24;
    QTest::newRow("none") << QByteArray("many") << 0;
    QTest::newRow("empty") << QByteArray("\n") << 0;
    QTest::newRow("below 0") << QByteArray("-3") << -3;
}

void PlanFilesTest::theLimitIsReadAsTheServiceReadsIt()
{
    QFETCH(QByteArray, text);
    QFETCH(int, limit);
    PlanSources sources;
    sources.files = QStringList{write(defaults::LimitSetting, text)};
    QCOMPARE(read(sources).settings.limit, std::optional<int>(limit));
    sources.limit = 99;
    QCOMPARE(read(sources).settings.limit, std::optional<int>(99));
}

void PlanFilesTest::aFileThatCannotBeUsedIsAFailure_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("status");
    const auto add = [](const char *name, const QStringList &names, const QByteArray &bytes,
                        ExitStatus status) {
        QTest::newRow(name) << names << bytes << static_cast<int>(status);
    };
    const QStringList keys{QStringLiteral("DefaultKeys")};
    add("a name that tells nothing", {QStringLiteral("x")}, "", ExitStatus::Usage);
    add("a name that tells both", {QStringLiteral("KeysAndActions")}, "", ExitStatus::Usage);
    add("two of a kind", {QStringLiteral("keys1"), QStringLiteral("keys2")}, "", ExitStatus::Usage);
    add("bytes that are not UTF-8", keys, "D1\xff", ExitStatus::InvalidText);
    add("a null character", keys, QByteArray("D1\0", 3), ExitStatus::InvalidText);
    add("a limit that is not UTF-8", {defaults::LimitSetting}, "\xff", ExitStatus::InvalidText);
    add("a file that is not there", keys, QByteArray(), ExitStatus::Failed);
}

void PlanFilesTest::aFileThatCannotBeUsedIsAFailure()
{
    QFETCH(QStringList, names);
    QFETCH(QByteArray, bytes);
    QFETCH(int, status);
    PlanSources sources;
    for (const QString &name : names)
        sources.files.append(bytes.isNull() ? m_directory->filePath(name) : write(name, bytes));
    try {
        read(sources);
        QFAIL("it was read");
    } catch (const Failure &failure) {
        QCOMPARE(static_cast<int>(failure.status), status);
        QVERIFY(!failure.message.isEmpty());
    }
}

PROGKEYS_TEST_MAIN(PlanFilesTest)
#include "PlanFilesTest.moc"
