#include "converting/Table.h"
#include "provisioning/Random.h"
#include "support/TestMain.h"
#include "tools/defaults/Findings.h"

#include "provisioning/ProvisioningText.h"

using defaults::Kind;
using defaults::Table;

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

Table randomTable(unit::Random &random)
{
    Table table{random.once(2) ? Kind::Actions : Kind::Keys, {}};
    const int records = random.below(6);
    for (int record = 1; record <= records; ++record) {
        QStringList fields;
        for (int field = 1; field <= provisioning::FieldCount; ++field)
            fields.append(
                randomField(random, record == records && field == provisioning::FieldCount));
        // At the start of a text it would be taken for a byte order mark.
        if (record == 1 && fields.first().startsWith(QChar(0xfeff)))
            fields.first().prepend(QLatin1Char('b'));
        table.records.append(fields);
    }
    return table;
}

// As the phone reads it, whatever this tool's own reader makes of it.
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

Table viaCsv(const Table &table)
{
    return defaults::readCsv(defaults::writeCsv(table), File, std::nullopt);
}

Table viaJson(const Table &table)
{
    return defaults::readJson(defaults::writeJson(table), File, std::nullopt);
}

} // namespace

/// That nothing is lost from one form to another, whatever the fields contain.
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
        const Table table = randomTable(random);
        const QByteArray text = defaults::writeText(table);
        QCOMPARE(recordsAsThePhoneReadsThem(text), table.records);
        const Table read = defaults::readText(text, File, table.kind);
        for (const Table &way : {viaCsv(read), viaJson(read), viaCsv(viaJson(viaCsv(read)))}) {
            QCOMPARE(way.kind, table.kind);
            QCOMPARE(way.records, table.records);
            QCOMPARE(defaults::writeText(way), text);
        }
    }
}

void RoundTripTest::anyTextThatIsReadIsWrittenAsThePhoneReadsIt_data()
{
    unit::addSeeds();
}

// Texts, not tables: with placeholder words, and with backslashes wherever they fall.
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
        if (text.startsWith('#') || text.startsWith("\xef\xbb\xbf"))
            continue;
        const Table read = defaults::readText(text, File, Kind::Actions);
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
