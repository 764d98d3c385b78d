#include "provisioning/PlainMerge.h"
#include "provisioning/RandomPhone.h"
#include "support/LogCapture.h"
#include "support/TestProgram.h"

namespace {

constexpr int EveryLevel = 7;
constexpr int PhoneCount = 500;
constexpr int RestartsOfEach = 3;

/// Two phones with the same rows, one for each merge.
struct Phones
{
    unit::MemoryPhone actual;
    unit::MemoryPhone expected;
};

void fill(Phones &phones, unsigned seed, int most)
{
    for (unit::MemoryPhone *phone : {&phones.actual, &phones.expected}) {
        unit::Random random(seed);
        unit::fill(*phone, random, most);
    }
}

/// The first difference, or an empty text if there is none.
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

/// Merges the rollout into both phones. Returns the first differences, or an empty text.
QByteArray difference(Phones &phones, const unit::Rollout &rollout, unit::LogCapture &capture)
{
    provisioning::mergeDefaults(phones.actual, rollout.actions, rollout.keys);
    const QStringList log = capture.take();
    plain::mergeDefaults(phones.expected, rollout.actions, rollout.keys);
    const QByteArray found = difference("calls, events and lines", log, capture.take()) +
                             difference("rows", phones.actual.rows(), phones.expected.rows());
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

/// The merge makes the same calls and writes the same log lines as the simple merge.
class MergeTest : public QObject
{
    Q_OBJECT

private slots:
    void bothMergesOfARandomRolloutHaveTheSameEffects_data() { unit::addSeeds(); }
    void bothMergesOfARandomRolloutHaveTheSameEffects()
    {
        QFETCH(unsigned, seed);
        unit::Random random(seed);
        unit::LogCapture log(EveryLevel);
        for (int phone = 0; phone < PhoneCount; ++phone) {
            Phones phones;
            const int most = random.once(20) ? 40 : 6;
            fill(phones, static_cast<unsigned>(random.below(1 << 30)), most);
            for (int restart = 0; restart < RestartsOfEach; ++restart)
                QCOMPARE(difference(phones, unit::randomRollout(random, most), log), QByteArray());
        }
    }

    void bothMergesOfAThousandRecordsHaveTheSameEffects_data()
    {
        QTest::addColumn<int>("differentDmIds");
        QTest::newRow("with a thousand identifiers") << 1000;
        QTest::newRow("with ten identifiers") << 10;
    }
    void bothMergesOfAThousandRecordsHaveTheSameEffects()
    {
        QFETCH(int, differentDmIds);
        unit::LogCapture log(EveryLevel);
        Phones phones;
        const QString records = manyRecords(1000, differentDmIds);
        QCOMPARE(difference(phones, {records, records}, log), QByteArray());
        QCOMPARE(phones.actual.actions().size(), 1000);
        QCOMPARE(difference(phones, {manyRecords(100, differentDmIds), records}, log),
                 QByteArray());
        QCOMPARE(phones.actual.keys().size(), 1000);
    }
};

PROGKEYS_TEST(MergeTest)
#include "MergeTest.moc"
