#include "defaults/Rollout.h"
#include "defaults/Report.h"
#include "support/TestMain.h"
#include "tools/defaults/Findings.h"

#include <QDir>
#include <QFile>

using defaults::CheckRequest;
using defaults::CheckResult;
using defaults::Setting;
using unit::utf8;

/// Settings held against each other, and against the limit.
class RolloutTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void recordsAreHeldAgainstEachOther_data();
    void recordsAreHeldAgainstEachOther();
    void theLimitComesFromTheOptionOrTheDirectory_data();
    void theLimitComesFromTheOptionOrTheDirectory();
    void aLimitThatIsNoNumberIsFoundAndCountsAsZero_data();
    void aLimitThatIsNoNumberIsFoundAndCountsAsZero();
    void keysAloneAreNamedAndNotHeldAgainstActions();
    void keysAreHeldAgainstTheActionsOfTheirDirectory();
    void whatCannotBeCheckedIsAFailure();
    void complaintsOfAFileStandInTheOrderOfTheText();
    void columnsAndCharactersCountCodePoints();
    void theSummaryCounts();

private:
    QString write(const QString &name, const QByteArray &bytes);
    QStringList found(const QStringList &files, std::optional<int> limit = std::nullopt);

    std::optional<QTemporaryDir> m_directory;
};

void RolloutTest::init()
{
    m_directory.emplace();
    QVERIFY(m_directory->isValid());
}

QString RolloutTest::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_directory->filePath(name);
    QFile file(path);
    const bool isWritten = QDir().mkpath(QFileInfo(path).path()) &&
                           file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    return isWritten ? path : QString();
}

QStringList RolloutTest::found(const QStringList &files, std::optional<int> limit)
{
    QStringList all;
    const CheckResult result = defaults::checkFiles({files, std::nullopt, limit});
    for (const Setting &setting : result.settings)
        all += unit::brief(setting);
    return all;
}

void RolloutTest::recordsAreHeldAgainstEachOther_data()
{
    QTest::addColumn<QByteArray>("actions");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *actions, const char *keys,
                        const char *expected) {
        QTest::newRow(name) << QByteArray(actions) << QByteArray(keys) << utf8(expected);
    };
    row("nothing at all", "", "", "");
    row("an action without a key", "A,1,,,,,", "", "");
    row("two keys of one action", "A,1,,,,,", "A,c,1,i,0,0,0#A,c,2,i,0,0,0", "");
    row("an action twice", "A,1,,,,,#B,1,,,,,#A,2,,,,,", "", "3:1 repeated-identifier of A");
    row("identifiers that differ in case", "A,1,,,,,#a,2,,,,,", "", "");
    row("a key without an action", "A,1,,,,,", "B,c,1,i,0,0,0", "1:1 key-without-action of B");
    row("a key that differs in a blank", "A,1,,,,,", "A ,c,1,i,0,0,0",
        "1:1 key-without-action of A ");
    row("a key of an action with an escape", "A\\,1,1,,,,,", "A\\,1,c,1,i,0,0,0", "");
    row("a key whose action is refused", "A,1", "A,c,1,i,0,0,0",
        "1:0 field-count of A,1|1:1 key-without-action of A");
    row("a place on the set twice", "A,1,,,,,", "A,c,1,i,0,0,0#A,c,1,j,0,1,1",
        "2:2 same-place of c,1");
    row("a place written in two ways", "A,1,,,,,", "A,c,1,i,0,0,0#A,c,+01,j,00,1,1",
        "2:2 same-place of c,+01");
    row("a position in another container", "A,1,,,,,", "A,c,1,i,0,0,0#A,d,1,j,0,0,0", "");
    row("a place on a module twice", "A,1,,,,,", "A,c,1,i,1,2,3#A,d,1,j,1,2,3",
        "2:3 same-place of 1");
    row("a key number on another module", "A,1,,,,,", "A,c,1,i,1,2,3#A,c,1,i,1,2,4", "");
    row("a key number on another kind of module", "A,1,,,,,", "A,c,1,i,1,2,3#A,c,1,i,1,3,3", "");
    row("a place on the set and on a module", "A,1,,,,,", "A,c,1,i,0,0,0#A,c,1,i,1,0,0", "");
    row("keys of other types have no place", "A,1,,,,,", "A,c,1,i,2,0,0#A,c,1,i,2,0,0", "");
}

void RolloutTest::recordsAreHeldAgainstEachOther()
{
    QFETCH(QByteArray, actions);
    QFETCH(QByteArray, keys);
    QFETCH(QString, expected);
    const QStringList files{write(utf8("DefaultKeys"), keys),
                            write(utf8("DefaultActions"), actions)};
    QStringList all = found(files);
    all.sort();
    QStringList wanted = expected.split(QLatin1Char('|'));
    wanted.sort();
    QCOMPARE(all.join(QLatin1Char('|')), wanted.join(QLatin1Char('|')));
}

void RolloutTest::theLimitComesFromTheOptionOrTheDirectory_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("option");
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("no limit") << QByteArray() << -1 << false;
    QTest::newRow("the file leaves room") << QByteArray("2\n") << -1 << false;
    QTest::newRow("the file leaves no room") << QByteArray("1\n") << -1 << true;
    QTest::newRow("the option leaves room") << QByteArray("1\n") << 2 << false;
    QTest::newRow("the option leaves no room") << QByteArray("2\n") << 1 << true;
    QTest::newRow("the option alone leaves no room") << QByteArray() << 0 << true;
}

void RolloutTest::theLimitComesFromTheOptionOrTheDirectory()
{
    QFETCH(QByteArray, text);
    QFETCH(int, option);
    QFETCH(bool, isRefused);
    const QString actions = write(utf8("DefaultActions"), "A,1,,,,,");
    // Two keys of the set that count: one is dropped, one is a module's.
    const QString keys =
        write(utf8("DefaultKeys"), "A,c,1,i,0,0,0#X,c,2,i,0,0,0#A,c,3,i,1,0,0#A,c,4,i,0,0,0");
    if (!text.isEmpty())
        QVERIFY(!write(utf8("ProgKeysMax"), text).isEmpty());
    const QStringList all =
        found({actions, keys}, option < 0 ? std::nullopt : std::optional<int>(option));
    const QString first = option == 0 ? utf8("1:0 too-many-keys of A,c,1,i,0,0,0")
                                      : utf8("4:0 too-many-keys of A,c,4,i,0,0,0");
    QCOMPARE(all.contains(first), isRefused);
    QCOMPARE(all.size(), isRefused ? 2 : 1);
    QVERIFY(all.contains(utf8("2:1 key-without-action of X")));
}

void RolloutTest::aLimitThatIsNoNumberIsFoundAndCountsAsZero_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("letters") << QByteArray("many");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("several records") << QByteArray("2#3");
}

void RolloutTest::aLimitThatIsNoNumberIsFoundAndCountsAsZero()
{
    QFETCH(QByteArray, text);
    const QString limit = write(utf8("ProgKeysMax"), text);
    const QString keys = write(utf8("DefaultKeys"), "A,c,1,i,0,0,0");
    const QStringList all = found({limit, keys});
    QCOMPARE(all.size(), 2);
    QVERIFY(all.first().endsWith(utf8("not-a-number of ") + QString::fromUtf8(text)));
    QCOMPARE(all.last(), utf8("1:0 too-many-keys of A,c,1,i,0,0,0"));
}

void RolloutTest::keysAloneAreNamedAndNotHeldAgainstActions()
{
    const QString keys = write(utf8("DefaultKeys"), "A,c,1,i,0,0,0");
    const CheckResult result = defaults::checkFiles({{keys}, std::nullopt, std::nullopt});
    QCOMPARE(result.keysAlone, QStringList{keys});
    QVERIFY(result.settings.first().findings.isEmpty());
}

void RolloutTest::keysAreHeldAgainstTheActionsOfTheirDirectory()
{
    const QString actions = write(utf8("one/DefaultActions"), "A,1,,,,,");
    const QString keys = write(utf8("one/DefaultKeys"), "B,c,1,i,0,0,0");
    const QString otherActions = write(utf8("two/DefaultActions"), "B,1,,,,,");
    const QString farKeys = write(utf8("three/DefaultKeys"), "A,c,1,i,0,0,0#B,c,2,i,0,0,0");
    QCOMPARE(found({actions, keys, otherActions}),
             QStringList{utf8("1:1 key-without-action of B")});
    QCOMPARE(found({actions, otherActions, farKeys}), QStringList());
}

void RolloutTest::whatCannotBeCheckedIsAFailure()
{
    const auto statusOf = [](const QString &file) {
        const auto failure = unit::failureOf([&] {
            defaults::checkFiles({{file}, std::nullopt, std::nullopt});
        });
        return failure ? failure->status : ExitStatus::Done;
    };
    QCOMPARE(statusOf(write(utf8("text"), "A")), ExitStatus::Usage);
    QCOMPARE(statusOf(m_directory->filePath(utf8("noKeys"))), ExitStatus::Failed);
    QVERIFY(QDir(m_directory->path()).mkdir(utf8("theKeys")));
    QCOMPARE(statusOf(m_directory->filePath(utf8("theKeys"))), ExitStatus::Failed);
    const QString text = write(utf8("text"), "A,c,1,i,0,0,0");
    QCOMPARE(
        defaults::checkFiles({{text}, defaults::Kind::Keys, std::nullopt}).settings.first().kind,
        defaults::Kind::Keys);
}

void RolloutTest::complaintsOfAFileStandInTheOrderOfTheText()
{
    const QString actions = write(utf8("DefaultActions"), "A,x,,,,escComa,#A,1#A,y,,,,,\n");
    QCOMPARE(found({actions}),
             (QStringList{utf8("1:2 not-a-number of x"), utf8("1:6 placeholder-word of escComa"),
                          utf8("2:0 field-count of A,1"), utf8("3:1 repeated-identifier of A"),
                          utf8("3:2 not-a-number of y")}));
}

void RolloutTest::columnsAndCharactersCountCodePoints()
{
    const QString path = write(utf8("DefaultActions"), "ü🙂,1,,,,,#藤🙂,x,,,,,");
    const CheckResult result = defaults::checkFiles({{path}, std::nullopt, std::nullopt});
    const QJsonObject row = defaults::listingOf(result.settings).rows.first();
    QCOMPARE(row.value(utf8("column")).toInt(), 4);
    QCOMPARE(row.value(utf8("character")).toInt(), 14);
    QCOMPARE(row.value(utf8("fieldName")).toString(), utf8("type"));
    const QString line = defaults::linesOf(result.settings.first(), output::Terminal()).first();
    QVERIFY2(line.startsWith(path + utf8(":2:2:4: error: ")), qPrintable(line));
}

void RolloutTest::theSummaryCounts()
{
    const auto summary = [](const QStringList &files) {
        return defaults::summaryOf(
            defaults::checkFiles({files, std::nullopt, std::nullopt}).settings);
    };
    const QString good = write(utf8("DefaultActions"), "A,1,,,,,#B,1,,,,,");
    const QString slip = write(utf8("OtherActions"), "A,1,,,,,#");
    const QString bad = write(utf8("DefaultKeys"), "A,c,x,i,y,0,#C,c,2,i,0,0,0");
    QCOMPARE(summary({good}), good + utf8(": 2 actions, no complaint"));
    QCOMPARE(summary({slip}), utf8("1 warning in ") + slip);
    QCOMPARE(summary({good, bad}), utf8("3 errors, 1 warning in 2 files"));
}

PROGKEYS_TEST_MAIN(RolloutTest)
#include "RolloutTest.moc"
