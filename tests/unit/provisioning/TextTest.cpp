#include "provisioning/RecordCheck.h"
#include "support/TestMain.h"

using provisioning::Field;
using provisioning::parseText;
using provisioning::Record;

namespace {

QString fieldsOf(const Record &record)
{
    QStringList texts;
    for (const Field &field : record.fields)
        texts.append(field.text);
    return texts.join(QLatin1Char('|'));
}

QString placeOf(const QString &text, int start, int length)
{
    return QStringLiteral("%1: %2").arg(QString::number(start), text.mid(start, length));
}

QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

/// How a setting's text is read.
class TextTest : public QObject
{
    Q_OBJECT

private slots:
    void recordsAreWhatStandsBetweenHashes_data();
    void recordsAreWhatStandsBetweenHashes();
    void fieldsAreWhatStandsBetweenCommas_data();
    void fieldsAreWhatStandsBetweenCommas();
    void anEscapeMayStandInEachField_data();
    void anEscapeMayStandInEachField();
    void onlyARecordOfSevenFieldsIsAccepted_data();
    void onlyARecordOfSevenFieldsIsAccepted();
    void aRefusedRecordShowsItsFieldsToo();
    void aRefusedRecordChangesNoOther();
    void placesAreCountedInTheTextAsItWasGiven();
    void anEmptyRecordHasAPlaceOfNoLength();
};

void TextTest::recordsAreWhatStandsBetweenHashes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("hidden");
    const auto row = [](const char *name, const char *text, const QStringList &hidden) {
        QTest::newRow(name) << utf8(text) << hidden;
    };
    const auto list = [](const char *texts) { return utf8(texts).split(QLatin1Char('|')); };
    row("an empty text is one empty record", "", list(""));
    row("a text without a hash is one record", "a,b", list("a,b"));
    row("a hash makes two records", "a#b", list("a|b"));
    row("a hash at the end makes an empty last record", "a#", list("a|"));
    row("a hash at the beginning makes an empty first record", "#a", list("|a"));
    row("a hash alone makes two empty records", "#", list("|"));
    row("two hashes make an empty record between them", "a##b", list("a||b"));
    row("an escaped hash does not separate", "a\\#b#c", list("aescSharpb|c"));
    row("escapes are hidden, other backslashes stay", "a\\,b\\#c\\d\\\\",
        list("aescComabescSharpc\\d\\\\"));
    row("the second of two backslashes escapes a hash", "a\\\\#b", list("a\\escSharpb"));
    row("the third of three backslashes escapes a hash", "a\\\\\\#b", list("a\\\\escSharpb"));
    row("an escaped comma before a hash does not escape it", "a\\,#b", list("aescComa|b"));
    row("an escaped hash before a hash does not escape it", "a\\##b", list("aescSharp|b"));
    row("a backslash at the end of the text is an ordinary one", "a#b\\", list("a|b\\"));
    row("a placeholder word is kept as it is", "escComa#escSharp", list("escComa|escSharp"));
    row("blanks and line ends are ordinary", " a \n#\tb", list(" a \n|\tb"));
    row("characters of any script are ordinary", "Zürich ☎#電話 🙂",
        list("Zürich ☎|電話 🙂"));
}

void TextTest::recordsAreWhatStandsBetweenHashes()
{
    QFETCH(QString, text);
    QFETCH(QStringList, hidden);
    const QList<Record> records = parseText(text);
    QStringList found;
    for (const Record &record : records)
        found.append(record.hidden);
    QCOMPARE(found, hidden);
    QCOMPARE(unit::faultIn(records, text), QString());
}

void TextTest::fieldsAreWhatStandsBetweenCommas_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("fields");
    const auto row = [](const char *name, const char *text, const char *fields) {
        QTest::newRow(name) << utf8(text) << utf8(fields);
    };
    row("an empty record has one empty field", "", "");
    row("a comma alone makes two empty fields", ",", "|");
    row("empty fields are kept", ",a,,b,", "|a||b|");
    row("blanks around a field belong to it", " a , b ", " a | b ");
    row("an escaped comma does not separate", "a\\,b,c", "a,b|c");
    row("an escaped hash comes out as a hash", "a\\#b,c", "a#b|c");
    row("a field may be an escape alone", "\\,,\\#", ",|#");
    row("escapes may follow each other", "\\,\\#\\,,a", ",#,|a");
    row("of two backslashes before a comma the second escapes it", "a\\\\,b", "a\\,b");
    row("of three backslashes before a comma the third escapes it", "a\\\\\\,b", "a\\\\,b");
    row("a backslash before a letter stays", "a\\nb,c", "a\\nb|c");
    row("a backslash before a backslash stays", "a\\\\b,c", "a\\\\b|c");
    row("a backslash before a blank stays", "a\\ ,c", "a\\ |c");
    row("a backslash at the end stays", "a,b\\", "a|b\\");
    row("a backslash alone stays", "\\", "\\");
    row("the word escComa comes out as a comma", "aescComab,c", "a,b|c");
    row("the word escSharp comes out as a hash", "aescSharpb,c", "a#b|c");
    row("a placeholder word in another case stays", "esccoma,ESCSHARP,escsharp",
        "esccoma|ESCSHARP|escsharp");
    row("a part of a placeholder word stays", "escCom,escSharescCom", "escCom|escSharescCom");
    row("a placeholder word split by a separator stays", "esc,Coma", "esc|Coma");
    row("an escape inside a placeholder word does not make one", "esc\\,Coma,esc\\#Sharp",
        "esc,Coma|esc#Sharp");
    row("an escape after half a placeholder word is an escape", "escCom\\,a,escS\\#harp",
        "escCom,a|escS#harp");
    row("a word that is whole only without its inner word is not read twice", "escescComaComa",
        "esc,Coma");
}

void TextTest::fieldsAreWhatStandsBetweenCommas()
{
    QFETCH(QString, text);
    QFETCH(QString, fields);
    const QList<Record> records = parseText(text);
    QCOMPARE(records.size(), 1);
    QCOMPARE(fieldsOf(records.first()), fields);
    QCOMPARE(unit::faultIn(records, text), QString());
}

void TextTest::anEscapeMayStandInEachField_data()
{
    QTest::addColumn<QStringList>("written");
    QTest::addColumn<QString>("fields");
    const QStringList letters = QStringLiteral("a b c d e f g").split(QLatin1Char(' '));
    for (int field = 0; field < letters.size(); ++field) {
        QStringList written = letters;
        QStringList fields = letters;
        written[field] = QStringLiteral("\\,1\\#2\\3\\,");
        fields[field] = QStringLiteral(",1#2\\3,");
        QTest::newRow(qPrintable(QStringLiteral("in field %1").arg(field)))
            << written << fields.join(QLatin1Char('|'));
    }
}

void TextTest::anEscapeMayStandInEachField()
{
    QFETCH(QStringList, written);
    QFETCH(QString, fields);
    const QString text = written.join(QLatin1Char(','));
    const QList<Record> records = parseText(text);
    QCOMPARE(records.size(), 1);
    QVERIFY(records.first().isAccepted());
    QCOMPARE(fieldsOf(records.first()), fields);
    QCOMPARE(unit::faultIn(records, text), QString());
}

void TextTest::onlyARecordOfSevenFieldsIsAccepted_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("fault");
    const auto row = [](const char *name, const char *text, const char *fault) {
        QTest::newRow(name) << utf8(text) << utf8(fault);
    };
    row("an empty record has one field", "", "1 instead of 7 fields");
    row("six fields are too few", "a,b,c,d,e,f", "6 instead of 7 fields");
    row("seven fields are right", "a,b,c,d,e,f,g", "");
    row("seven empty fields are right", ",,,,,,", "");
    row("eight fields are too many", "a,b,c,d,e,f,g,h", "8 instead of 7 fields");
    row("eight fields are too many even if the last is empty", "a,b,c,d,e,f,g,",
        "8 instead of 7 fields");
    row("an escaped comma makes no field", "a,b,c,d,e,f\\,g", "6 instead of 7 fields");
    row("seven fields are right beside an escaped comma", "a,b,c,d,e,f,g\\,h", "");
    row("the comma of a placeholder word makes no field", "a,b,c,d,e,fescComag",
        "6 instead of 7 fields");
}

void TextTest::onlyARecordOfSevenFieldsIsAccepted()
{
    QFETCH(QString, text);
    QFETCH(QString, fault);
    const QList<Record> records = parseText(text);
    QCOMPARE(records.size(), 1);
    QCOMPARE(records.first().fault, fault);
    QCOMPARE(records.first().isAccepted(), fault.isEmpty());
    QCOMPARE(unit::faultIn(records, text), QString());
}

void TextTest::aRefusedRecordShowsItsFieldsToo()
{
    const Record record = parseText(utf8("D1,3,a\\,b")).first();
    QVERIFY(!record.isAccepted());
    QCOMPARE(fieldsOf(record), utf8("D1|3|a,b"));
    QCOMPARE(record.hidden, utf8("D1,3,aescComab"));
}

void TextTest::aRefusedRecordChangesNoOther()
{
    const QString text = utf8("a,b,c,d,e,f,g#too,few##h,i,j,k,l,m,n");
    const QList<Record> records = parseText(text);
    QStringList accepted;
    for (const Record &record : records) {
        if (record.isAccepted())
            accepted.append(QString::number(record.number) + QLatin1Char(':') + fieldsOf(record));
    }
    QCOMPARE(accepted, (QStringList{utf8("1:a|b|c|d|e|f|g"), utf8("4:h|i|j|k|l|m|n")}));
    QCOMPARE(unit::faultIn(records, text), QString());
}

void TextTest::placesAreCountedInTheTextAsItWasGiven()
{
    const QString text = utf8("D\\,1,3#\\#2,ü🙂,x\\,,\\y\\#z,");
    const QList<Record> records = parseText(text);
    QStringList places;
    for (const Record &record : records) {
        places.append(placeOf(text, record.start, record.length));
        for (const Field &field : record.fields)
            places.append(placeOf(text, field.start, field.length));
    }
    QCOMPARE(places,
             (QStringList{utf8("0: D\\,1,3"), utf8("0: D\\,1"), utf8("5: 3"),
                          utf8("7: \\#2,ü🙂,x\\,,\\y\\#z,"), utf8("7: \\#2"), utf8("11: ü🙂"),
                          utf8("15: x\\,"), utf8("19: \\y\\#z"), utf8("25: ")}));
}

void TextTest::anEmptyRecordHasAPlaceOfNoLength()
{
    const QList<Record> records = parseText(utf8("ab##"));
    QCOMPARE(records.size(), 3);
    QCOMPARE(records.at(1).start, 3);
    QCOMPARE(records.at(1).length, 0);
    QCOMPARE(records.at(2).start, 4);
    QCOMPARE(records.at(2).length, 0);
    QCOMPARE(records.at(2).number, 3);
}

PROGKEYS_TEST_MAIN(TextTest)
#include "TextTest.moc"
