#include "provisioning/ProvisionedRecords.h"
#include "provisioning/Random.h"
#include "provisioning/RecordCheck.h"
#include "support/TestMain.h"

using provisioning::FieldCount;
using provisioning::parseText;
using provisioning::Record;

namespace {

constexpr int Lists = 5000;
constexpr int Texts = 10000;

const QStringList &pieces()
{
    static const QStringList all{
        QStringLiteral("\\"),      QStringLiteral("\\\\"),     QStringLiteral(","),
        QStringLiteral("#"),       QStringLiteral("\\,"),      QStringLiteral("\\#"),
        QStringLiteral("esc"),     QStringLiteral("Com"),      QStringLiteral("a"),
        QStringLiteral("Shar"),    QStringLiteral("p"),        QStringLiteral("e"),
        QStringLiteral("escComa"), QStringLiteral("escSharp"), QStringLiteral("x"),
        QStringLiteral("7"),       QStringLiteral(" "),        QStringLiteral("\n"),
        QString(QChar(0)),         QString(QChar(0xd83d)),     QString(QChar(0xde42)),
        QStringLiteral("ü"),       QString(QChar(0x0301)),     QStringLiteral("電"),
    };
    return all;
}

QString withoutPlaceholderWords(QString text)
{
    while (text.contains(QLatin1String("escComa")) || text.contains(QLatin1String("escSharp")))
        text.remove(QLatin1String("escComa")).remove(QLatin1String("escSharp"));
    return text;
}

// Nothing escapes a backslash, so a field that another one follows cannot end with one.
QString randomField(unit::Random &random)
{
    QString field = withoutPlaceholderWords(random.join(pieces(), random.below(8)));
    while (field.endsWith(QLatin1Char('\\')))
        field.chop(1);
    return field;
}

QStringList randomFields(unit::Random &random)
{
    QStringList fields;
    const int count = random.once(4) ? random.between(1, 12) : FieldCount;
    while (fields.size() < count)
        fields.append(randomField(random));
    return fields;
}

QString written(QStringList fields)
{
    for (QString &field : fields)
        field.replace(QLatin1String(","), QLatin1String("\\,"))
            .replace(QLatin1String("#"), QLatin1String("\\#"));
    return fields.join(QLatin1Char(','));
}

QList<QStringList> fieldsIn(const QString &text)
{
    QList<QStringList> lists;
    const QList<Record> records = parseText(text);
    for (const Record &record : records) {
        QStringList fields;
        for (const provisioning::Field &field : record.fields)
            fields.append(field.text);
        lists.append(fields);
    }
    return lists;
}

QByteArray hex(const QString &text)
{
    return QByteArray("in ") + text.toUtf8().toPercentEncoding();
}

} // namespace

/// What holds for any text.
class TextPropertiesTest : public QObject
{
    Q_OBJECT

private slots:
    void fieldsThatAreWrittenWithEscapesComeBack_data() { unit::addSeeds(); }
    void fieldsThatAreWrittenWithEscapesComeBack();
    void anyTextGivesTheRecordsOfThePlainWay_data() { unit::addSeeds(); }
    void anyTextGivesTheRecordsOfThePlainWay();
    void anyBytesGiveTheRecordsOfThePlainWay_data() { unit::addSeeds(); }
    void anyBytesGiveTheRecordsOfThePlainWay();
    void allShortTextsGiveTheRecordsOfThePlainWay();
    void aVeryLongTextIsReadToItsEnd();
};

void TextPropertiesTest::fieldsThatAreWrittenWithEscapesComeBack()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    for (int round = 0; round < Lists; ++round) {
        QList<QStringList> lists;
        QStringList texts;
        for (int count = random.between(1, 5); count > 0; --count) {
            lists.append(randomFields(random));
            texts.append(written(lists.last()));
        }
        // The very last field of the text is the one that may end with a backslash.
        if (random.once(3)) {
            lists.last().last() += QLatin1Char('\\');
            texts.last() += QLatin1Char('\\');
        }
        const QString text = texts.join(QLatin1Char('#'));
        QVERIFY2(fieldsIn(text) == lists, hex(text).constData());
        QVERIFY2(unit::faultIn(parseText(text), text).isEmpty(), hex(text).constData());
    }
}

void TextPropertiesTest::anyTextGivesTheRecordsOfThePlainWay()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    for (int round = 0; round < Texts; ++round) {
        const QString text = random.join(pieces(), random.below(40));
        const QString fault = unit::faultIn(parseText(text), text);
        QVERIFY2(fault.isEmpty(), (fault.toUtf8() + ' ' + hex(text)).constData());
    }
}

void TextPropertiesTest::anyBytesGiveTheRecordsOfThePlainWay()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    for (int round = 0; round < Texts; ++round) {
        QByteArray bytes;
        for (int count = random.below(60); count > 0; --count)
            bytes.append(random.once(2) ? "\\,#"[random.below(3)] : char(random.below(256)));
        const QString text = QString::fromUtf8(bytes);
        const QString fault = unit::faultIn(parseText(text), text);
        QVERIFY2(fault.isEmpty(), (fault.toUtf8() + ' ' + hex(text)).constData());
        const QList<Record> records = parseText(text);
        for (const Record &record : records) {
            if (record.isAccepted()) {
                QCOMPARE(provisioning::toAction(record).dmId, record.fields.first().text);
                QCOMPARE(provisioning::toKey(record).dmId, record.fields.first().text);
            }
        }
    }
}

void TextPropertiesTest::allShortTextsGiveTheRecordsOfThePlainWay()
{
    const QString letters = QStringLiteral("\\,#x");
    constexpr int Longest = 7;
    for (int length = 0; length <= Longest; ++length) {
        for (int number = 0; number < 1 << (2 * length); ++number) {
            QString text;
            for (int index = 0; index < length; ++index)
                text.append(letters.at(number >> (2 * index) & 3));
            const QString fault = unit::faultIn(parseText(text), text);
            QVERIFY2(fault.isEmpty(), (fault.toUtf8() + ' ' + hex(text)).constData());
        }
    }
}

void TextPropertiesTest::aVeryLongTextIsReadToItsEnd()
{
    const QString record = QStringLiteral("D\\,1,3,call\\#,,501,Reception,Rec#");
    constexpr int Count = 20000;
    const QString text = record.repeated(Count) + QStringLiteral("a,b,c,d,e,f,g");
    const QList<Record> records = parseText(text);
    QCOMPARE(records.size(), Count + 1);
    QCOMPARE(records.last().fields.last().text, QStringLiteral("g"));
    QCOMPARE(records.last().fields.last().start, static_cast<int>(text.size()) - 1);
    QCOMPARE(unit::faultIn(records, text), QString());
}

PROGKEYS_TEST_MAIN(TextPropertiesTest)
#include "TextPropertiesTest.moc"
