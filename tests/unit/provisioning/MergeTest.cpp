#include "provisioning/PlainMerge.h"
#include "provisioning/RandomPhone.h"
#include "support/LogCapture.h"
#include "support/TestProgram.h"

namespace {

constexpr int EveryLevel = 7;
constexpr int Phones = 500;
constexpr int RestartsOfEach = 3;

/// Two phones with the same contents, one for each way to merge.
struct Twins
{
    unit::MemoryPhone ours;
    unit::MemoryPhone plains;
};

void fill(Twins &twins, unsigned seed, int most)
{
    for (unit::MemoryPhone *phone : {&twins.ours, &twins.plains}) {
        unit::Random random(seed);
        unit::fill(*phone, random, most);
    }
}

/// The first line that differs; empty if none does.
QByteArray difference(const char *what, const QStringList &found, const QStringList &expected)
{
    if (found == expected)
        return {};
    int line = 0;
    while (line < found.size() && line < expected.size() && found.at(line) == expected.at(line))
        ++line;
    return QByteArray(what) + ": \"" + found.value(line).toUtf8() + "\" instead of \"" +
           expected.value(line).toUtf8() + "\" ";
}

/// Merges the rollout into both phones. Returns what differs afterwards; empty if nothing does.
QByteArray difference(Twins &twins, const unit::Rollout &rollout, unit::LogCapture &capture)
{
    provisioning::mergeDefaults(twins.ours, rollout.actions, rollout.keys);
    const QStringList log = capture.take();
    plain::mergeDefaults(twins.plains, rollout.actions, rollout.keys);
    const QByteArray found = difference("calls, events and lines", log, capture.take()) +
                             difference("rows", twins.ours.rows(), twins.plains.rows());
    return found.isEmpty() ? found
                           : found + "for DefaultActions=" + rollout.actions.toUtf8() +
                                 " and DefaultKeys=" + rollout.keys.toUtf8();
}

QString manyRecords(int count, int differentDmIds)
{
    QStringList records;
    for (int number = 0; number < count; ++number)
        records.append(QStringLiteral("D%1,0,a,b,c,%2,s").arg(number % differentDmIds).arg(number));
    return records.join(QLatin1Char('#'));
}

} // namespace

/// The merge and the plain way do and log the same in the same order.
class MergeTest : public QObject
{
    Q_OBJECT

private slots:
    void aRandomRolloutIsMergedAsInThePlainWay_data() { unit::addSeeds(); }
    void aRandomRolloutIsMergedAsInThePlainWay()
    {
        QFETCH(unsigned, seed);
        unit::Random random(seed);
        unit::LogCapture log(EveryLevel);
        for (int phone = 0; phone < Phones; ++phone) {
            Twins twins;
            const int most = random.once(20) ? 40 : 6;
            fill(twins, static_cast<unsigned>(random.below(1 << 30)), most);
            for (int restart = 0; restart < RestartsOfEach; ++restart)
                QCOMPARE(difference(twins, unit::randomRollout(random, most), log), QByteArray());
        }
    }

    void aThousandRecordsAreMergedAsInThePlainWay_data()
    {
        QTest::addColumn<int>("differentDmIds");
        QTest::newRow("with a thousand identifiers") << 1000;
        QTest::newRow("with ten identifiers") << 10;
    }
    void aThousandRecordsAreMergedAsInThePlainWay()
    {
        QFETCH(int, differentDmIds);
        unit::LogCapture log(EveryLevel);
        Twins twins;
        const QString records = manyRecords(1000, differentDmIds);
        QCOMPARE(difference(twins, {records, records}, log), QByteArray());
        QCOMPARE(twins.ours.actions().size(), 1000);
        QCOMPARE(difference(twins, {manyRecords(100, differentDmIds), records}, log), QByteArray());
        QCOMPARE(twins.ours.keys().size(), 1000);
    }
};

PROGKEYS_TEST(MergeTest)
#include "MergeTest.moc"
