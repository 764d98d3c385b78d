#include "support/TestMain.h"
#include "tools/defaults/Findings.h"

using defaults::Kind;
using unit::utf8;

namespace {

// The text with brackets around what is marked, the place itself in square ones.
QString withMarks(const defaults::Setting &setting, const defaults::Finding &finding)
{
    QString text = setting.text;
    QList<defaults::Span> spans = finding.alsoMarked;
    for (auto span = spans.crbegin(); span != spans.crend(); ++span)
        text.insert(span->end(), QLatin1Char('>')).insert(span->start, QLatin1Char('<'));
    return text.insert(finding.place.end(), QLatin1Char(']'))
        .insert(finding.place.start, QLatin1Char('['));
}

} // namespace

/// Which slip a wrong number of fields is put down to.
class CommaTest : public QObject
{
    Q_OBJECT

private slots:
    void theSlipIsGuessed_data();
    void theSlipIsGuessed();
    void aHopelessRecordIsOnlyCounted_data();
    void aHopelessRecordIsOnlyCounted();

private:
    static void addActions();
    static void addKeys();
    static void addHashes();
};

void CommaTest::theSlipIsGuessed_data()
{
    QTest::addColumn<bool>("isOfKeys");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("record");
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("marked");
    addActions();
    addKeys();
    addHashes();
}

void CommaTest::addActions()
{
    const auto row = [](const char *name, const char *marked, int field, int record = 1) {
        QString text = utf8(marked);
        for (const char sign : {'[', ']', '<', '>'})
            text.remove(QLatin1Char(sign));
        QTest::newRow(name) << false << text << record << field << utf8(marked);
    };
    row("a name with a comma in the label", "D4,1,call,,501,Smith[,] John,Smith", 6);
    row("a name with a comma in the arguments", "D4,1,call,,Smith[,] John,501,Smith", 5);
    row("a comma without a blank", "D4,1,call,,501,Smith[,]John,Smith", 6);
    row("arguments that are alike", "D4,1,open,view,view=all[,]sort=name,Contacts,All", 5);
    row("arguments that are alike, one of them escaped",
        "D4,1,open,view,view=all\\,building[,]sort=name,Contacts of all,All", 5);
    row("two numbers in the arguments", "D4,1,call,,0[,]501,Reception,Rec", 5);
    row("a comma in the short label", "D4,1,call,,501,Smith,S[,] J", 7);
    row("a comma in the identifier", "Smith[,] J,1,call,,501,Smith,S", 1);
    row("a comma in the identifier, told by the number", "Smith[,]J,1,call,,501,Smith,S", 1);
    row("a comma in the action, after a number", "D4,1,call[,] ring,,501,Smith,S", 3);
    row("two commas in one label", "D4,1,call,,501,Smith[,] John<,> Sales,Smith", 6);
    row("commas in two fields", "D4,1,call,,0[,] 501,Smith<,> John,Smith", 5);
    row("escapes elsewhere are kept", "D4,1,call,,0\\,501,Smith[,] John,S\\,J", 6);
    row("a field that the others leave empty",
        "A,1,call,,1,La,a#B,1,call,,2,Lb,b#D4,1,call,,3[,]4,Lc,c", 5, 3);
    row("a backslash at the end of the arguments", "D4,1,call,,C:\\dir[\\,]Label,L", 5);
    row("two backslashes at the end", "D4,1,call,,C:\\dir\\[\\,]Label,L", 5);
    row("a backslash at the end, and an escape before a blank",
        "D4,1,call,,C:\\dir[\\,]Smith\\, John,L", 5);
    row("two backslashes, of two fields", "D4,1,C:[\\,],C:<\\,>Label,L", 3);
}

void CommaTest::addKeys()
{
    const auto row = [](const char *name, const char *marked, int field) {
        QString text = utf8(marked);
        text.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
        QTest::newRow(name) << true << text << 1 << field << utf8(marked);
    };
    row("a comma in the container", "D1,main[,] left,0,ic1,1,0,0", 2);
    row("a comma in the container, told by the numbers", "D1,main[,]left,0,ic1,1,0,0", 2);
    row("a comma in the icon, told by the numbers", "D1,main,0,ic[,]1,1,0,0", 4);
    row("a comma in the identifier of a key", "D[,] 1,main,0,ic,1,0,0", 1);
    row("a backslash at the end of the container", "D1,main[\\,]0,ic,1,0,0", 2);
}

void CommaTest::addHashes()
{
    const auto row = [](const char *name, const char *marked, int record, int field) {
        QString text = utf8(marked);
        text.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
        QTest::newRow(name) << false << text << record << field << utf8(marked);
    };
    row("a hash in the label", "D9,1,call,,55,Desk [#]1,D1", 1, 6);
    row("a hash at the end of the last field", "D9,1,call,,55,Desk,D [#]1", 2, 0);
    row("a line break for a hash", "A,1,c,,5,l,s[\n]B,1,c,,5,l,s", 1, 7);
    row("a hash behind a backslash", "A,1,c,,5,l,s[\\#]B,1,c,,5,l,s", 1, 7);
}

void CommaTest::theSlipIsGuessed()
{
    QFETCH(bool, isOfKeys);
    QFETCH(QString, text);
    QFETCH(int, record);
    QFETCH(int, field);
    QFETCH(QString, marked);
    const defaults::Setting setting =
        unit::checked(isOfKeys ? Kind::Keys : Kind::Actions, text.toUtf8());
    QVERIFY(!setting.findings.isEmpty());
    const defaults::Finding &finding = setting.findings.first();
    QCOMPARE(finding.code, utf8("field-count"));
    QCOMPARE(withMarks(setting, finding), marked);
    QCOMPARE(finding.record, record);
    QCOMPARE(finding.field, field);
}

void CommaTest::aHopelessRecordIsOnlyCounted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("begin");
    QTest::newRow("too few") << utf8("D4,1,call") << utf8("3 fields instead of 7: wanted are ");
    QTest::newRow("one") << utf8("D4") << utf8("1 field instead of 7: wanted are ");
    QTest::newRow("too few, whatever its escapes are")
        << utf8("a\\,b,c") << utf8("2 fields instead of 7: wanted are ");
    QTest::newRow("a rest that belongs to no number")
        << utf8("A,1,c,w,a,l,s#D4,1") << utf8("2 fields instead of 7: wanted are ");
    QTest::newRow("far too many") << QString(30, QLatin1Char(','))
                                  << utf8("31 fields instead of 7: a comma that ");
}

void CommaTest::aHopelessRecordIsOnlyCounted()
{
    QFETCH(QString, text);
    QFETCH(QString, begin);
    const defaults::Setting setting = unit::checked(Kind::Actions, text.toUtf8());
    QCOMPARE(setting.findings.size(), 1);
    const QString message = setting.findings.first().message;
    QVERIFY2(message.startsWith(begin), qPrintable(message));
    QCOMPARE(setting.findings.first().field, 0);
}

PROGKEYS_TEST_MAIN(CommaTest)
#include "CommaTest.moc"
