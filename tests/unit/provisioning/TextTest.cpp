#include "provisioning/ProvisionedRecords.h"
#include "provisioning/RecordCheck.h"
#include "support/Samples.h"
#include "support/TestProgram.h"

using provisioning::parseText;
using provisioning::Record;

namespace {

QString fieldsOf(const Record &record)
{
    QStringList texts;
    for (const provisioning::Field &field : record.fields)
        texts.append(field.text);
    return texts.join(QLatin1Char('|'));
}

QString placeOf(const QString &text, int start, int length)
{
    return QStringLiteral("%1: %2").arg(QString::number(start), text.mid(start, length));
}

} // namespace

/// Parsing the text of a setting.
class TextTest : public QObject
{
    Q_OBJECT

private slots:
    void aHashSeparatesRecords_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("hidden");
        const auto row = [](const char *name, const char *text, const char *hidden) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(hidden);
        };
        row("an empty text is one empty record", "", "");
        row("a text without a hash is one record", "a,b", "a,b");
        row("a hash separates two records", "a#b", "a|b");
        row("a hash at the end makes an empty last record", "a#", "a|");
        row("a hash at the beginning makes an empty first record", "#a", "|a");
        row("two hashes make an empty record between them", "a##b", "a||b");
        row("an escaped hash does not separate", "a\\#b#c", "aescSharpb|c");
        row("escapes are hidden and other backslashes stay", "a\\,b\\#c\\d\\\\",
            "aescComabescSharpc\\d\\\\");
        row("the second of two backslashes escapes a hash", "a\\\\#b", "a\\escSharpb");
        row("an escaped comma before a hash does not escape it", "a\\,#b", "aescComa|b");
        row("an escaped hash before a hash does not escape it", "a\\##b", "aescSharp|b");
        row("a backslash at the end of the text is a character", "a#b\\", "a|b\\");
        row("a placeholder word stays in the record", "escComa#escSharp", "escComa|escSharp");
        row("spaces, line breaks and non-ASCII characters are ordinary characters",
            " ü \n#\t電🙂", " ü \n|\t電🙂");
    }
    void aHashSeparatesRecords()
    {
        QFETCH(QString, text);
        QFETCH(QString, hidden);
        QStringList found;
        const QList<Record> records = parseText(text);
        for (const Record &record : records)
            found.append(record.hidden);
        QCOMPARE(found.join(QLatin1Char('|')), hidden);
        QCOMPARE(unit::faultIn(records, text), QString());
    }

    void aCommaSeparatesFields_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("fields");
        const auto row = [](const char *name, const char *text, const char *fields) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(fields);
        };
        row("an empty record has one empty field", "", "");
        row("empty fields are kept", ",a,,b,", "|a||b|");
        row("spaces around a field belong to it", " a , b ", " a | b ");
        row("an escaped comma does not separate", "a\\,b,c", "a,b|c");
        row("an escaped hash becomes a hash", "a\\#b,c", "a#b|c");
        row("a field can consist of an escape", "\\,,\\#", ",|#");
        row("escapes can follow each other", "\\,\\#\\,,a", ",#,|a");
        row("the second of two backslashes escapes a comma", "a\\\\,b", "a\\,b");
        row("the third of three backslashes escapes a comma", "a\\\\\\,b", "a\\\\,b");
        row("a backslash before another character stays", "a\\n\\\\b\\ ,c\\", "a\\n\\\\b\\ |c\\");
        row("the word escComa becomes a comma", "aescComab,c", "a,b|c");
        row("the word escSharp becomes a hash", "aescSharpb,c", "a#b|c");
        row("a placeholder word in another case stays", "esccoma,ESCSHARP", "esccoma|ESCSHARP");
        row("a part of a placeholder word stays", "escCom,escShar", "escCom|escShar");
        row("a separator can split a placeholder word", "esc,Coma", "esc|Coma");
        row("an escape inside a placeholder word is an escape", "escCom\\,a,escS\\#harp",
            "escCom,a|escS#harp");
        row("a placeholder word that results from a replacement stays", "escescComaComa",
            "esc,Coma");
    }
    void aCommaSeparatesFields()
    {
        QFETCH(QString, text);
        QFETCH(QString, fields);
        const QList<Record> records = parseText(text);
        QCOMPARE(records.size(), 1);
        QCOMPARE(fieldsOf(records.first()), fields);
        QCOMPARE(unit::faultIn(records, text), QString());
    }

    void onlyARecordWithSevenFieldsIsAccepted_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("fault");
        const auto row = [](const char *name, const char *text, const char *fault) {
            QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(fault);
        };
        row("an empty record", "", "1 instead of 7 fields");
        row("six fields", "a,b,c,d,e,f", "6 instead of 7 fields");
        row("seven empty fields", ",,,,,,", "");
        row("eight fields, the last one empty", "a,b,c,d,e,f,g,", "8 instead of 7 fields");
        row("six fields, one with an escaped comma", "a,b,c,d,e,f\\,g", "6 instead of 7 fields");
        row("seven fields, one with an escaped comma", "a,b,c,d,e,f,g\\,h", "");
        row("six fields, one with a placeholder word", "a,b,c,d,e,fescComag",
            "6 instead of 7 fields");
    }
    void onlyARecordWithSevenFieldsIsAccepted()
    {
        QFETCH(QString, text);
        QFETCH(QString, fault);
        const Record record = parseText(text).first();
        QCOMPARE(record.fault, fault);
        QCOMPARE(record.isAccepted(), fault.isEmpty());
    }

    void positionsAreIndexesIntoTheOriginalText()
    {
        const QString text = QString::fromUtf8("D\\,1,3#\\#2,ü🙂,x\\,,\\y\\#z,");
        const QList<Record> records = parseText(text);
        QStringList places;
        for (const Record &record : records) {
            places.append(placeOf(text, record.start, record.length));
            for (const provisioning::Field &field : record.fields)
                places.append(placeOf(text, field.start, field.length));
        }
        const QStringList expected{
            QStringLiteral("0: D\\,1,3"), QStringLiteral("0: D\\,1"),
            QStringLiteral("5: 3"),       QString::fromUtf8("7: \\#2,ü🙂,x\\,,\\y\\#z,"),
            QStringLiteral("7: \\#2"),    QString::fromUtf8("11: ü🙂"),
            QStringLiteral("15: x\\,"),   QStringLiteral("19: \\y\\#z"),
            QStringLiteral("25: "),
        };
        QCOMPARE(places, expected);
    }

    void theFieldsOfARecordAreThoseOfAnAction()
    {
        const QString text = QStringLiteral("D\\,1,3,call,web\\#app,501,Recep,Rec");
        QCOMPARE(describe(provisioning::toAction(parseText(text).first())),
                 QStringLiteral("Action(-1, 'D,1', 3, 'call', 'web#app', '501', 'Recep', 'Rec')"));
    }

    void theFieldsOfARecordAreThoseOfAKey()
    {
        const QString text = QStringLiteral("D\\,1,ma\\#in,2,ic\\,on,3,4,5");
        QCOMPARE(describe(provisioning::toKey(parseText(text).first())),
                 QStringLiteral("Key(-1, 'D,1', 'ma#in', -1, 2, 'ic,on', 3, 4, 5)"));
    }

    void aTextThatIsNotADecimalNumberBecomesZero_data()
    {
        QTest::addColumn<QString>("written");
        QTest::addColumn<int>("number");
        const auto row = [](const char *name, const char *written, int number) {
            QTest::newRow(name) << QString::fromUtf8(written) << number;
        };
        row("digits", "42", 42);
        row("a minus sign", "-5", -5);
        row("a plus sign", "+5", 5);
        row("leading zeros", "010", 10);
        row("spaces around digits", " \t7 ", 7);
        row("the largest number", "2147483647", 2147483647);
        row("the smallest number", "-2147483648", -2147483647 - 1);
        row("the largest number plus one", "2147483648", 0);
        row("the smallest number minus one", "-2147483649", 0);
        row("an empty text", "", 0);
        row("digits before letters", "12abc", 0);
        row("two numbers", "1 2", 0);
        row("only a sign", "-", 0);
        row("hexadecimal digits", "0x10", 0);
        row("a fraction", "1.5", 0);
        row("an escaped comma", "1\\,000", 0);
    }
    void aTextThatIsNotADecimalNumberBecomesZero()
    {
        QFETCH(QString, written);
        QFETCH(int, number);
        const QString action = QStringLiteral("D,%1,c,w,a,l,s").arg(written);
        QCOMPARE(provisioning::toAction(parseText(action).first()).type, number);
        const QString text = QStringLiteral("D,c,%1,i,%1,%1,%1").arg(written);
        const Key key = provisioning::toKey(parseText(text).first());
        QCOMPARE(QList<int>({key.position, key.type, key.aom_type, key.aom_addr}),
                 QList<int>({number, number, number, number}));
    }
};

PROGKEYS_TEST(TextTest)
#include "TextTest.moc"
