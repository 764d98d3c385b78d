#include "support/TestMain.h"
#include "tools/defaults/Findings.h"

using defaults::Kind;
using unit::utf8;

Q_DECLARE_METATYPE(defaults::Kind)

/// What is wrong with a record by itself.
class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void eachComplaintHasItsPlace_data();
    void eachComplaintHasItsPlace();
    void bytesThatAreNotUtf8AreFoundWhereTheyStand_data();
    void bytesThatAreNotUtf8AreFoundWhereTheyStand();
    void anErrorIsTheLossAndAWarningTheSlip();
    void oneNewlineAtTheEndDoesNotBelongToTheText();
    void aKindIsToldByTheNameOfTheFile_data();
    void aKindIsToldByTheNameOfTheFile();
};

void RecordsTest::eachComplaintHasItsPlace_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("found");
    const auto action = [](const char *name, const QByteArray &bytes, const char *found) {
        QTest::newRow(name) << Kind::Actions << bytes << utf8(found);
    };
    const auto key = [](const char *name, const QByteArray &bytes, const char *found) {
        QTest::newRow(name) << Kind::Keys << bytes << utf8(found);
    };
    action("a good action", "D,1,c,w,a,l,s", "");
    key("a good key", "D,c,1,i,0,0,0", "");
    action("an empty text provisions nothing", "", "");
    action("a hash at the end", "D,1,c,w,a,l,s#", "2:0 empty-record of #");
    action("a hash at the start", "#D,1,c,w,a,l,s", "1:0 empty-record of #");
    action("a hash too many between", "D,1,c,w,a,l,s##E,1,c,w,a,l,s", "2:0 empty-record of #");
    action("a hash alone", "#", "1:0 empty-record of #|2:0 empty-record of #");
    action("a number with a letter", "D,1O,c,w,a,l,s", "1:2 not-a-number of 1O");
    action("a number with an escape", "D,1\\,0,c,w,a,l,s", "1:2 not-a-number of 1\\,0");
    action("a number beyond 32 bits", "D,2147483648,c,w,a,l,s", "1:2 not-a-number of 2147483648");
    action("the greatest number", "D,2147483647,c,w,a,l,s", "");
    action("numbers that the phone takes", "D, +5 ,c,w,a,l,s#E,-0,c,w,a,l,s", "");
    action("a number left out", "D,,c,w,a,l,s", "1:2 empty-number of ");
    action("a blank in the place of a number", "D, ,c,w,a,l,s", "1:2 empty-number of  ");
    key("every number of a key", "D,c,a,i,b,d,",
        "1:3 not-a-number of a|1:5 not-a-number of b|1:6 not-a-number of d|1:7 empty-number of ");
    action("letters in a text of an action are no numbers", "D,1,one,two,three,four,five", "");
    action("an action without an identifier", ",1,c,w,a,l,s", "1:1 empty-identifier of ");
    key("a key without an identifier", ",c,1,i,0,0,0", "1:1 empty-identifier of ");
    action("both words", "D,1,c,w,aescCommaescSharp,lescComa,s",
           "1:5 placeholder-word of escSharp|1:6 placeholder-word of escComa");
    action("a word twice", "D,1,c,w,a,escComaescComa,s",
           "1:6 placeholder-word of escComa|1:6 placeholder-word of escComa");
    action("a word in other letters", "D,1,c,w,esccoma,ESCSHARP,esc\\,Coma", "");
    action("a word in a refused record", "D,escComa",
           "1:0 field-count of D,escComa|1:2 placeholder-word of escComa");
    action("a line break", "D,1,c,w,a,l\n1,s", "1:6 line-break of \n");
    action("a line break before each record", "D,1,c,w,a,l,s#\nE,1,c,w,a,l,s#\nF,1,c,w,a,l,s",
           "2:1 line-break of \n|3:1 line-break of \n");
    action("records that are lines, told once", "D,1,c,w,a,l,s\nE,1,c,w,a,l,s\nF,1,c,w,a,l,s",
           "1:7 field-count of \n|1:7 line-break of \n");
    action("a carriage return", "D,1,c,w,a,l,s\r\n", "1:7 line-break of \r");
    action("U+0000", QByteArray("D,1,c\0,w,a,l,s", 14), "1:3 null-character of \0");
    action("a byte order mark",
           "\xef\xbb\xbf"
           "D,1,c,w,a,l,s",
           "1:1 byte-order-mark of ");
    action("a byte order mark alone", "\xef\xbb\xbf", "1:0 byte-order-mark of ");
    action("U+FEFF elsewhere", "D,1,c,w,a,\xef\xbb\xbf,s", "");
}

void RecordsTest::eachComplaintHasItsPlace()
{
    QFETCH(Kind, kind);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, found);
    QString all = unit::brief(unit::checked(kind, bytes)).join(QLatin1Char('|'));
    all.remove(QChar(0));
    QCOMPARE(all, found);
}

void RecordsTest::bytesThatAreNotUtf8AreFoundWhereTheyStand_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("place");
    const auto row = [](const char *name, const QByteArray &bytes, int offset, int place) {
        QTest::newRow(name) << bytes << offset << place;
    };
    row("a letter of Latin-1", "D,1,caf\xe9,w,a,l,s", 8, 7);
    row("after characters of several bytes", "\xc3\xbc\xf0\x9f\x99\x82,1,\xe9,w,a,l,s", 10, 6);
    row("a byte that only continues", "D\x80,1,c,w,a,l,s", 2, 1);
    row("a character cut off at the end", "D,1,c,w,a,l,s\xef", 14, 13);
    row("a character cut off by a separator", "D,1,c\xef\xbf,w,a,l,s", 6, 5);
    row("behind a replacement character that is meant", "\xef\xbf\xbd,1,\xe9,w,a,l,s", 7, 4);
    row("half of a surrogate pair", "D,1,\xed\xa0\x80,w,a,l,s", 5, 4);
    row("behind a byte order mark",
        "\xef\xbb\xbf"
        "D,1,\xe9,w,a,l,s",
        8, 4);
}

void RecordsTest::bytesThatAreNotUtf8AreFoundWhereTheyStand()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, offset);
    QFETCH(int, place);
    const defaults::Setting setting =
        defaults::readSetting(QStringLiteral("file"), Kind::Actions, bytes);
    const defaults::Finding &finding = setting.findings.last();
    QCOMPARE(finding.code, utf8("not-utf8"));
    QCOMPARE(finding.place.start, place);
    QVERIFY2(finding.message.startsWith(QStringLiteral("byte %1 of").arg(offset)),
             qPrintable(finding.message));
}

void RecordsTest::anErrorIsTheLossAndAWarningTheSlip()
{
    const auto severityOf = [](const QByteArray &bytes) {
        return unit::checked(Kind::Actions, bytes).findings.first().severity;
    };
    for (const char *text : {"D,1,c,w,a,l,s,t", "D,x,c,w,a,l,s", ",1,c,w,a,l,s",
                             "D,1,c,w,a,escComa,s", "\xff", "\xef\xbb\xbf"})
        QCOMPARE(severityOf(text), defaults::Severity::Error);
    for (const char *text : {"D,1,c,w,a,l,s#", "D,,c,w,a,l,s", "D,1,c,w,a,l\n,s"})
        QCOMPARE(severityOf(text), defaults::Severity::Warning);
}

void RecordsTest::oneNewlineAtTheEndDoesNotBelongToTheText()
{
    const auto textOf = [](const QByteArray &bytes) {
        return defaults::readSetting(QStringLiteral("file"), Kind::Keys, bytes).text;
    };
    QCOMPARE(textOf("a\n"), utf8("a"));
    QCOMPARE(textOf("a\n\n"), utf8("a\n"));
    QCOMPARE(textOf("\n"), QString());
    QVERIFY(defaults::readSetting(QStringLiteral("file"), Kind::Keys, "\n").records.isEmpty());
}

void RecordsTest::aKindIsToldByTheNameOfTheFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("kind");
    QTest::newRow("actions") << utf8("/x/DefaultActions") << utf8("actions");
    QTest::newRow("keys, in other letters") << utf8("default-KEYS.txt") << utf8("keys");
    QTest::newRow("a directory does not tell") << utf8("/keys/text") << QString();
    QTest::newRow("a directory does not matter") << utf8("/keys/my-actions") << utf8("actions");
    QTest::newRow("both tell nothing") << utf8("keys-and-actions") << QString();
    QTest::newRow("stdin tells nothing") << utf8("-") << QString();
}

void RecordsTest::aKindIsToldByTheNameOfTheFile()
{
    QFETCH(QString, path);
    QFETCH(QString, kind);
    const std::optional<Kind> told = defaults::kindOfFile(path);
    QCOMPARE(told ? defaults::nameOf(*told) : QString(), kind);
}

PROGKEYS_TEST_MAIN(RecordsTest)
#include "RecordsTest.moc"
