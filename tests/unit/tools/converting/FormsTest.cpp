#include "converting/Table.h"
#include "support/TestMain.h"
#include "tools/defaults/Findings.h"

using defaults::Kind;
using defaults::Table;
using unit::utf8;

Q_DECLARE_METATYPE(defaults::Table)

namespace {

const QString File = QStringLiteral("FILE");

QString joined(const Table &table)
{
    QStringList records{defaults::nameOf(table.kind)};
    for (const QStringList &record : table.records)
        records.append(record.join(QLatin1Char('|')));
    return records.join(QLatin1Char('\n'));
}

Table table(Kind kind, const QString &first, const QString &second)
{
    return {kind, {{first, utf8("1"), utf8("2"), utf8("3"), utf8("4"), utf8("5"), second}}};
}

} // namespace

/// Text, CSV and JSON by themselves; that they agree is RoundTripTest's.
class FormsTest : public QObject
{
    Q_OBJECT

private slots:
    void textIsReadAsThePhoneReadsIt_data();
    void textIsReadAsThePhoneReadsIt();
    void textWithRefusedRecordsIsNotRead_data();
    void textWithRefusedRecordsIsNotRead();
    void textIsWrittenWithEscapes();
    void whatTextCannotSayIsNotWritten_data();
    void whatTextCannotSayIsNotWritten();
    void csvIsReadByItsHeader_data();
    void csvIsReadByItsHeader();
    void csvThatIsNoneIsNotRead_data();
    void csvThatIsNoneIsNotRead();
    void csvIsWrittenWithTheQuotesItNeeds();
    void jsonIsReadByItsNames_data();
    void jsonIsReadByItsNames();
    void jsonThatIsNoneIsNotRead_data();
    void jsonThatIsNoneIsNotRead();
    void jsonHasNumbersWhereTheyAreWrittenSo();
    void noRecordsAreWrittenAndReadInEachForm();
};

void FormsTest::textIsReadAsThePhoneReadsIt_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("records");
    QTest::newRow("nothing") << QByteArray("\n") << utf8("actions");
    QTest::newRow("escapes") << QByteArray("D\\,1,3,a\\#,b\\c,,,\\\n")
                             << utf8("actions\nD,1|3|a#|b\\c|||\\");
    QTest::newRow("a placeholder word is what it comes out as")
        << QByteArray("D,3,escComa,,,,") << utf8("actions\nD|3|,||||");
}

void FormsTest::textIsReadAsThePhoneReadsIt()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, records);
    QCOMPARE(joined(defaults::readText(bytes, File, Kind::Actions)), records);
}

void FormsTest::textWithRefusedRecordsIsNotRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("too few fields") << QByteArray("D,1,c");
    QTest::newRow("too many fields") << QByteArray("D,1,c,w,a,l,s,t");
    QTest::newRow("an empty record") << QByteArray("D,1,c,w,a,l,s#");
    QTest::newRow("bytes that are not UTF-8") << QByteArray("D,1,\xff,w,a,l,s");
    QTest::newRow("a byte order mark") << QByteArray("\xef\xbb\xbf"
                                                     "D,1,c,w,a,l,s");
    QTest::newRow("U+0000") << QByteArray("D,1,\0,w,a,l,s", 13);
}

void FormsTest::textWithRefusedRecordsIsNotRead()
{
    QFETCH(QByteArray, bytes);
    const auto failure = unit::failureOf([&] { defaults::readText(bytes, File, Kind::Actions); });
    QVERIFY(failure);
    QCOMPARE(failure->status, ExitStatus::InvalidText);
    QVERIFY(failure->advice.contains(utf8("defaults check --kind actions FILE")));
}

void FormsTest::textIsWrittenWithEscapes()
{
    QCOMPARE(defaults::writeText(table(Kind::Keys, utf8("a,b#c\\d"), utf8("\\"))),
             QByteArray("a\\,b\\#c\\d,1,2,3,4,5,\\\n"));
    QCOMPARE(defaults::writeText(table(Kind::Keys, utf8("a\\,b"), utf8("\n"))),
             QByteArray("a\\\\,b,1,2,3,4,5,\n\n"));
}

void FormsTest::whatTextCannotSayIsNotWritten_data()
{
    QTest::addColumn<Table>("table");
    QTest::addColumn<QString>("begin");
    const auto row = [](const char *name, const Table &table, const char *begin) {
        QTest::newRow(name) << table << utf8(begin);
    };
    const QString plain = utf8("x");
    row("a comma's word", table(Kind::Actions, plain, utf8("aescComab")),
        "Record 1 cannot be written as text: field 7, short label, contains the word `escComa`");
    row("a hash's word", table(Kind::Actions, utf8("escSharp"), plain),
        "Record 1 cannot be written as text: field 1, identifier, contains the word `escSharp`");
    row("a backslash before a separator", table(Kind::Keys, utf8("a\\"), plain),
        "Record 1 cannot be written as text: field 1, identifier, ends in a backslash");
    Table two = table(Kind::Keys, plain, utf8("a\\"));
    two.records.append(two.records.first());
    row("a backslash at the end of a record that is not the last", two,
        "Record 1 cannot be written as text: field 7, address of the add-on module, ends in a");
    row("U+0000", table(Kind::Keys, plain, QString(QChar(0))),
        "Record 1 cannot be written as text: field 7, address of the add-on module, contains "
        "U+0000");
    row("U+FEFF at the start", table(Kind::Keys, QString(QChar(0xfeff)), plain),
        "Record 1 cannot be written as text: field 1, identifier, begins with U+FEFF");
}

void FormsTest::whatTextCannotSayIsNotWritten()
{
    QFETCH(Table, table);
    QFETCH(QString, begin);
    const auto failure = unit::failureOf([&] { defaults::writeText(table); });
    QVERIFY(failure);
    QCOMPARE(failure->status, ExitStatus::InvalidText);
    QVERIFY2(failure->message.startsWith(begin), qPrintable(failure->message));
}

void FormsTest::csvIsReadByItsHeader_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("records");
    const auto row = [](const char *name, const QByteArray &bytes, const char *records) {
        QTest::newRow(name) << bytes << utf8(records);
    };
    const QByteArray keys = "dmId,container,position,icon,type,aom_type,aom_addr\r\n";
    const QByteArray actions = "dmId,type,action,webAppName,arguments,label,shortLabel\n";
    row("keys", keys + "D,c,1,i,0,0,0\r\n", "keys\nD|c|1|i|0|0|0");
    row("actions", actions + "D,1,c,w,a,l,s\n", "actions\nD|1|c|w|a|l|s");
    row("no line end at the end", keys + "D,c,1,i,0,0,0", "keys\nD|c|1|i|0|0|0");
    row("another order", "icon,aom_addr,aom_type,type,position,container,dmId\ni,4,3,2,1,c,D",
        "keys\nD|c|1|i|2|3|4");
    row("a byte order mark", "\xef\xbb\xbf" + keys + "D,c,1,i,0,0,0", "keys\nD|c|1|i|0|0|0");
    row("a quoted header", "\"dmId\",container,position,icon,type,aom_type,aom_addr\n", "keys");
    row("quotes", keys + "\"a,\"\"b\"\"#\",\"\r\n\",1,,\"\",0,0", "keys\na,\"b\"#|\r\n|1|||0|0");
    row("blanks are kept", keys + " a , b ,1,\" c \",0,0, ", "keys\n a | b |1| c |0|0| ");
    row("an empty line is no record", keys + "\r\nD,c,1,i,0,0,0\r\n\r\n", "keys\nD|c|1|i|0|0|0");
    row("empty fields are a record", keys + ",,,,,,\n", "keys\n||||||");
}

void FormsTest::csvIsReadByItsHeader()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, records);
    QCOMPARE(joined(defaults::readCsv(bytes, File, std::nullopt)), records);
}

void FormsTest::csvThatIsNoneIsNotRead_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("begin");
    const auto row = [](const char *name, const QByteArray &bytes, const char *begin) {
        QTest::newRow(name) << bytes << utf8(begin);
    };
    const QByteArray keys = "dmId,container,position,icon,type,aom_type,aom_addr\r\n";
    row("nothing", "", "FILE does not begin with a line of field names");
    row("no header", "D,c,1,i,0,0,0", "FILE does not begin with a line of field names");
    row("a column too few", "dmId,container,position,icon,type,aom_type\n",
        "FILE lacks the column `aom_addr` of keys");
    row("a column too many", "x," + keys, "FILE has a column `x`, which is no field of keys");
    row("a column twice", "icon," + keys, "FILE has the column `icon` twice");
    row("a field too few", keys + "D,c,1,i,0,0,0\nD,c,1,i,0,0",
        "Record 2 of FILE has 6 fields instead of 7");
    row("a field too many", keys + "D,c,1,i,0,0,0,", "Record 1 of FILE has 8 fields instead of 7");
    row("a quote inside", keys + "D,c,1,i,0,0,0\nD\"D,c,1,i,0,0,0",
        "A quote in line 3 of FILE stands where none may");
    row("letters after a quote", keys + "\"D\"D,c,1,i,0,0,0",
        "A quote in line 2 of FILE stands where none may");
    row("a quote left open", keys + "\"D,c,1,i,0,0,0", "FILE ends within quotes");
    row("bytes that are not UTF-8", keys + "\xff,c,1,i,0,0,0", "FILE is not UTF-8");
}

void FormsTest::csvThatIsNoneIsNotRead()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, begin);
    const auto failure = unit::failureOf([&] { defaults::readCsv(bytes, File, std::nullopt); });
    QVERIFY(failure);
    QCOMPARE(failure->status, ExitStatus::InvalidText);
    QVERIFY2(failure->message.startsWith(begin), qPrintable(failure->message));
}

void FormsTest::csvIsWrittenWithTheQuotesItNeeds()
{
    const Table records{
        Kind::Actions,
        {{utf8("a"), utf8("1"), utf8("b,c"), utf8("d\"e"), utf8(" f"), utf8("g\nh"), utf8("i#\\")},
         {{}, {}, {}, {}, {}, {}, {}}}};
    QCOMPARE(defaults::writeCsv(records),
             QByteArray("dmId,type,action,webAppName,arguments,label,shortLabel\r\n"
                        "a,1,\"b,c\",\"d\"\"e\",\" f\",\"g\nh\",i#\\\r\n"
                        ",,,,,,\r\n"));
}

void FormsTest::jsonIsReadByItsNames_data()
{
    QTest::addColumn<QByteArray>("records");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &position, const char *text) {
        QTest::newRow(name) << position << utf8(text);
    };
    row("a number", "1", "1");
    row("a number of the other sign", "-2147483648", "-2147483648");
    row("a number written in another way", "1e2", "100");
    row("a text", "\" +1\"", " +1");
    row("a text that is no number", "\"1O\"", "1O");
}

void FormsTest::jsonIsReadByItsNames()
{
    QFETCH(QByteArray, records);
    QFETCH(QString, expected);
    const QByteArray text =
        "{\"kind\":\"keys\",\"version\":1,\"records\":[{\"aom_addr\":3,\"aom_type\":2,\"type\":1,"
        "\"icon\":\"i\\u0001\",\"container\":\"c\",\"dmId\":\"D\",\"position\":" +
        records + "}],\"schema\":\"com.velmora.Tessaro.ProgrammableKeys.Defaults\"}";
    QCOMPARE(joined(defaults::readJson(text, File, std::nullopt)),
             utf8("keys\nD|c|%1|i\u0001|1|2|3").arg(expected));
}

void FormsTest::jsonThatIsNoneIsNotRead_data()
{
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QByteArray>("changed");
    QTest::addColumn<QString>("begin");
    const auto row = [](const char *name, const char *old, const char *changed, const char *begin) {
        QTest::newRow(name) << QByteArray(old) << QByteArray(changed) << utf8(begin);
    };
    row("no JSON", "]", "}", "line 5 of FILE is no JSON: ");
    row("another schema", ".Defaults\"", ".Other\"", "The schema of FILE is not ");
    row("another version", "1,", "2,", "The version of FILE is not 1, ");
    row("a version that is a text", "1,", "\"1\",", "The version of FILE is not 1, ");
    row("another kind", "\"keys\"", "\"doors\"", "The kind of FILE is neither ");
    row("the kind that was not asked for", "\"keys\"", "\"actions\"", "FILE is of actions");
    row("no records", "\"records\"", "\"rows\"", "FILE has a member `rows`, which is unknown");
    row("no kind", "\"kind\": \"keys\",", "", "FILE lacks the member `kind`");
    row("records that are none", "[{", "{\"x\": [{", "line 5 of FILE is no JSON: ");
    row("a number for a text", "\"D\"", "5",
        "Record 1 of FILE: the member `dmId` is a number, not a text");
    row("null for a text", "\"D\"", "null",
        "Record 1 of FILE: the member `dmId` is null, not a text");
    row("a fraction", "7", "7.5",
        "Record 1 of FILE: the member `position` is neither an integer of 32 bits nor a text");
    row("more than 32 bits", "7", "2147483648",
        "Record 1 of FILE: the member `position` is neither an integer of 32 bits nor a text");
    row("true for a number", "7", "true",
        "Record 1 of FILE: the member `position` is neither an integer of 32 bits nor a text");
    row("half of a character", "\"D\"", "\"\\ud83d\"",
        "Record 1 of FILE: the member `dmId` has half of a surrogate pair");
    row("a member too many", "\"icon\"", "\"x\": 1, \"icon\"",
        "Record 1 of FILE has a member `x`, which is unknown");
    row("a member too few", "\"icon\": \"i\", ", "", "Record 1 of FILE lacks the member `icon`");
}

void FormsTest::jsonThatIsNoneIsNotRead()
{
    QFETCH(QByteArray, old);
    QFETCH(QByteArray, changed);
    QFETCH(QString, begin);
    QByteArray text = "{\n\"schema\": \"com.velmora.Tessaro.ProgrammableKeys.Defaults\",\n"
                      "\"version\": 1,\n\"kind\": \"keys\",\n\"records\": [{\"dmId\": \"D\", "
                      "\"container\": \"c\", \"position\": 7, \"icon\": \"i\", \"type\": 0, "
                      "\"aom_type\": 0, \"aom_addr\": 0}]}";
    QVERIFY(defaults::readJson(text, File, Kind::Keys).records.size() == 1);
    text.replace(text.indexOf(old), old.size(), changed);
    const auto failure = unit::failureOf([&] { defaults::readJson(text, File, Kind::Keys); });
    QVERIFY(failure);
    QCOMPARE(failure->status, ExitStatus::InvalidText);
    QVERIFY2(failure->message.startsWith(begin), qPrintable(failure->message));
}

void FormsTest::jsonHasNumbersWhereTheyAreWrittenSo()
{
    const Table records{Kind::Keys,
                        {{utf8("1"), utf8("2"), utf8("-3"), utf8("4"), utf8("+5"), utf8("06"),
                          utf8("2147483648")}}};
    QVERIFY(defaults::writeJson(records).contains(
        "\n    {\"dmId\": \"1\", \"container\": \"2\", \"position\": -3, \"icon\": \"4\", "
        "\"type\": \"+5\", \"aom_type\": \"06\", \"aom_addr\": \"2147483648\"}\n"));
}

void FormsTest::noRecordsAreWrittenAndReadInEachForm()
{
    const Table none{Kind::Keys, {}};
    QCOMPARE(defaults::writeText(none), QByteArray("\n"));
    QCOMPARE(joined(defaults::readText(defaults::writeText(none), File, Kind::Keys)), utf8("keys"));
    QCOMPARE(joined(defaults::readCsv(defaults::writeCsv(none), File, std::nullopt)), utf8("keys"));
    QCOMPARE(joined(defaults::readJson(defaults::writeJson(none), File, std::nullopt)),
             utf8("keys"));
}

PROGKEYS_TEST_MAIN(FormsTest)
#include "FormsTest.moc"
