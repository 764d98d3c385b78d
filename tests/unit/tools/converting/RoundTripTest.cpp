#include "converting/Formats.h"
#include "defaults/Setting.h"
#include "provisioning/Random.h"
#include "support/TestProgram.h"

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

bool canBeWritten(const QString &field, bool isLast)
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
    while (!canBeWritten(field, isLast));
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
        // Reading CSV skips empty rows.
        if (fields.join(QString()).trimmed().isEmpty())
            fields.first().prepend(QLatin1Char('a'));
        // At the start of a text, this character is a byte order mark.
        if (record == 1 && fields.first().startsWith(QChar(0xfeff)))
            fields.first().prepend(QLatin1Char('b'));
        records.records.append(fields);
    }
    return records;
}

// The records that the service reads.
QList<QStringList> recordsOfService(QByteArray text)
{
    text.chop(1);
    QList<QStringList> records;
    if (text.isEmpty())
        return records;
    for (const provisioning::Record &record : provisioning::parseText(QString::fromUtf8(text)))
        records.append(defaults::textsOf(record));
    return records;
}

Records viaCsv(const Records &records)
{
    return defaults::readCsv(defaults::writeCsv(records), File);
}

Records viaJson(const Records &records)
{
    return defaults::readJson(defaults::writeJson(records), File);
}

} // namespace

/// Conversion between the formats keeps random records unchanged.
class RoundTripTest : public QObject
{
    Q_OBJECT

private slots:
    void everyFormatHasTheSameRecords_data();
    void everyFormatHasTheSameRecords();
};

void RoundTripTest::everyFormatHasTheSameRecords_data()
{
    unit::addSeeds();
}

void RoundTripTest::everyFormatHasTheSameRecords()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    for (int round = 0; round < Rounds; ++round) {
        const Records records = randomRecords(random);
        const QByteArray text = defaults::writeText(records);
        QCOMPARE(recordsOfService(text), records.records);
        const Records read = defaults::readText(text, File, records.kind);
        for (const Records &converted : {viaCsv(read), viaJson(read)}) {
            QCOMPARE(converted.kind, records.kind);
            QCOMPARE(converted.records, records.records);
            QCOMPARE(defaults::writeText(converted), text);
        }
    }
}

PROGKEYS_TEST(RoundTripTest)
#include "RoundTripTest.moc"
