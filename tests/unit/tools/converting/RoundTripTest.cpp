#include "converting/Formats.h"
#include "provisioning/Random.h"
#include "support/TestMain.h"

#include "provisioning/ProvisioningText.h"

using defaults::Kind;
using defaults::Records;

namespace {

constexpr int Rounds = 1500;
const QString File = QStringLiteral("FILE");

const QStringList &pieces()
{
    static const QStringList all{
        QStringLiteral(","),    QStringLiteral("#"),    QStringLiteral("\\"),
        QStringLiteral("\\\\"), QStringLiteral("\\,"),  QStringLiteral("\\#"),
        QStringLiteral("\""),   QStringLiteral("\"\""), QStringLiteral("'"),
        QStringLiteral("\n"),   QStringLiteral("\r\n"), QStringLiteral("\r"),
        QStringLiteral(" "),    QStringLiteral("\t"),   QStringLiteral("a"),
        QStringLiteral("esc"),  QStringLiteral("Coma"), QStringLiteral("Sharp"),
        QStringLiteral("7"),    QStringLiteral("-1"),   QStringLiteral("+05"),
        QStringLiteral("ü"),    QStringLiteral("電話"), QStringLiteral("🙂"),
        QString(QChar(0x0301)), QString(QChar(0x2028)), QString(QChar(0x202e)),
        QString(QChar(0xfffd)), QString(QChar(0xfeff)), QString(QChar(0x7f)),
        QString(QChar(1)),      QStringLiteral("null"), QStringLiteral("{\"[]:"),
        QStringLiteral("%1"),   QStringLiteral("/"),    QStringLiteral("\\u0041"),
    };
    return all;
}

bool canBeSaid(const QString &field, bool isLast)
{
    return !field.contains(QLatin1String("escComa")) &&
           !field.contains(QLatin1String("escSharp")) &&
           (isLast || !field.endsWith(QLatin1Char('\\')));
}

QString randomField(unit::Random &random, bool isLast)
{
    QString field;
    do
        field = random.join(pieces(), random.below(6));
    while (!canBeSaid(field, isLast));
    return field;
}

Records randomRecords(unit::Random &random)
{
    Records records{random.once(2) ? Kind::Actions : Kind::Keys, {}};
    const int count = random.below(6);
    for (int record = 1; record <= count; ++record) {
        QStringList fields;
        for (int field = 1; field <= provisioning::FieldCount; ++field)
            fields.append(
                randomField(random, record == count && field == provisioning::FieldCount));
        // Empty rows of a spreadsheet are skipped.
        if (fields.join(QString()).trimmed().isEmpty())
            fields.first().prepend(QLatin1Char('a'));
        // At the start of a text it would be taken for a byte order mark.
        if (record == 1 && fields.first().startsWith(QChar(0xfeff)))
            fields.first().prepend(QLatin1Char('b'));
        records.records.append(fields);
    }
    return records;
}

// As the phone reads it.
QList<QStringList> recordsAsThePhoneReadsThem(QByteArray text)
{
    text.chop(1);
    QList<QStringList> records;
    if (text.isEmpty())
        return records;
    const QList<provisioning::Record> parsed = provisioning::parseText(QString::fromUtf8(text));
    for (const provisioning::Record &record : parsed) {
        QStringList fields;
        for (const provisioning::Field &field : record.fields)
            fields.append(field.text);
        records.append(fields);
    }
    return records;
}

Records viaCsv(const Records &records)
{
    return defaults::readCsv(defaults::writeCsv(records), File, std::nullopt);
}

Records viaJson(const Records &records)
{
    return defaults::readJson(defaults::writeJson(records), File, std::nullopt);
}

} // namespace

/// Nothing is lost between the formats, for any content of the fields.
class RoundTripTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFormGivesTheSameTextBack_data();
    void everyFormGivesTheSameTextBack();
    void anyTextThatIsReadIsWrittenAsThePhoneReadsIt_data();
    void anyTextThatIsReadIsWrittenAsThePhoneReadsIt();
};

void RoundTripTest::everyFormGivesTheSameTextBack_data()
{
    unit::addSeeds();
}

void RoundTripTest::everyFormGivesTheSameTextBack()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    for (int round = 0; round < Rounds; ++round) {
        const Records records = randomRecords(random);
        const QByteArray text = defaults::writeText(records);
        QCOMPARE(recordsAsThePhoneReadsThem(text), records.records);
        const Records read = defaults::readText(text, File, records.kind);
        for (const Records &way : {viaCsv(read), viaJson(read), viaCsv(viaJson(viaCsv(read)))}) {
            QCOMPARE(way.kind, records.kind);
            QCOMPARE(way.records, records.records);
            QCOMPARE(defaults::writeText(way), text);
        }
    }
}

void RoundTripTest::anyTextThatIsReadIsWrittenAsThePhoneReadsIt_data()
{
    unit::addSeeds();
}

// Texts with placeholder words and backslashes.
void RoundTripTest::anyTextThatIsReadIsWrittenAsThePhoneReadsIt()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    int withoutWords = 0;
    for (int round = 0; round < Rounds; ++round) {
        QStringList fields;
        for (int field = 0; field < provisioning::FieldCount; ++field)
            fields.append(random.join(pieces(), random.below(4))
                              .remove(QLatin1Char(','))
                              .remove(QLatin1Char('#')));
        for (int field = 0; field + 1 < fields.size(); ++field) {
            if (fields.at(field).endsWith(QLatin1Char('\\')))
                fields[field] += random.pick<QString>(
                    {QStringLiteral(","), QStringLiteral("#."), QStringLiteral("escComa")});
        }
        const QByteArray text = fields.join(QLatin1Char(',')).toUtf8() + '\n';
        const bool isEmpty = fields.join(QString()).trimmed().isEmpty();
        if (isEmpty || text.startsWith('#') || text.startsWith("\xef\xbb\xbf"))
            continue;
        const Records read = defaults::readText(text, File, Kind::Actions);
        QCOMPARE(read.records, recordsAsThePhoneReadsThem(text));
        const QByteArray again = defaults::writeText(viaJson(viaCsv(read)));
        QCOMPARE(recordsAsThePhoneReadsThem(again), read.records);
        if (text.contains("escComa") || text.contains("escSharp"))
            continue;
        QCOMPARE(again, text);
        ++withoutWords;
    }
    QVERIFY(withoutWords > Rounds / 4);
}

PROGKEYS_TEST_MAIN(RoundTripTest)
#include "RoundTripTest.moc"
