#include "provisioning/PlainMerge.h"
#include "provisioning/RandomPhone.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

namespace {

constexpr int EveryLevel = 7;
constexpr int Phones = 1000;
constexpr int RestartsOfEach = 3;

/// Two phones that are the same, one for each way.
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

QByteArray describe(const unit::Rollout &rollout)
{
    return "for DefaultActions=" + rollout.actions.toUtf8() +
           " and DefaultKeys=" + rollout.keys.toUtf8();
}

// The first line that differs, nothing if none does.
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

// Merges the rollout into both, and says what differs afterwards; nothing if all is well.
QByteArray difference(Twins &twins, const unit::Rollout &rollout, unit::LogCapture &capture)
{
    provisioning::mergeDefaults(twins.ours, rollout.actions, rollout.keys);
    const QStringList log = capture.take();
    plain::mergeDefaults(twins.plains, rollout.actions, rollout.keys);
    const QByteArray found = difference("calls, events and lines", log, capture.take()) +
                             difference("rows", twins.ours.rows(), twins.plains.rows());
    return found.isEmpty() ? found : found + describe(rollout);
}

QString manyRecords(int count, int differentDmIds)
{
    QStringList records;
    for (int number = 0; number < count; ++number)
        records.append(QStringLiteral("D%1,0,a,b,c,%2,s").arg(number % differentDmIds).arg(number));
    return records.join(QLatin1Char('#'));
}

Action storedAction(qlonglong idAction, const char *dmId)
{
    Action action;
    action.idAction = idAction;
    action.dmId = QLatin1String(dmId);
    return action;
}

Key storedKey(qlonglong idKey, const char *dmId, qlonglong idAction)
{
    Key key;
    key.idKey = idKey;
    key.dmId = QLatin1String(dmId);
    key.idAction = idAction;
    return key;
}

// A provisioned action that stays, one that is withdrawn, a user's, and keys of all three kinds:
// the user's is bound to the action that is withdrawn.
const ListAction StoredActions{storedAction(4, "D1"), storedAction(7, "D3"), storedAction(9, "")};
const ListKey StoredKeys{storedKey(1, "", 7), storedKey(2, "D1", 4), storedKey(3, "D3", 7)};

struct SamplePhone : unit::MemoryPhone
{
    SamplePhone()
    {
        for (const Action &action : StoredActions)
            put(action);
        for (const Key &key : StoredKeys)
            put(key);
    }
};

const QString Actions = QStringLiteral("D1,3,call,,501,Desk,Dsk#too,few#D2,5,open,,a\\,b,,");
const QString Keys = QStringLiteral("D1,main,0,,1,0,0#D2,main,x,,0,0,0#D9,main,2,,0,0,0#");

} // namespace

/// The merge, against the plain way of doing it.
class MergeTest : public QObject
{
    Q_OBJECT

private slots:
    void anyRolloutDoesAndLogsWhatThePlainWayDoes_data() { unit::addSeeds(); }
    void anyRolloutDoesAndLogsWhatThePlainWayDoes();
    void manyRecordsDoAndLogWhatThePlainWayDoes_data();
    void manyRecordsDoAndLogWhatThePlainWayDoes();
    void stepsAndLinesComeInTheirOrder();
    void aWithdrawnActionIsAskedToGoAndEveryUserRowStays();
    void nothingIsLoggedAtLevelThree();
    void onlyWarningsAreLoggedAtLevelFour();
};

void MergeTest::anyRolloutDoesAndLogsWhatThePlainWayDoes()
{
    QFETCH(unsigned, seed);
    unit::Random random(seed);
    unit::LogCapture log(EveryLevel);
    for (int phone = 0; phone < Phones; ++phone) {
        Twins twins;
        const int most = random.once(20) ? 40 : 6;
        fill(twins, static_cast<unsigned>(random.below(1 << 30)), most);
        for (int restart = 0; restart < RestartsOfEach; ++restart) {
            const QByteArray found = difference(twins, unit::randomRollout(random, most), log);
            QVERIFY2(found.isEmpty(), found.constData());
        }
    }
}

void MergeTest::manyRecordsDoAndLogWhatThePlainWayDoes_data()
{
    QTest::addColumn<int>("differentDmIds");
    QTest::newRow("a thousand identifiers") << 1000;
    QTest::newRow("ten identifiers, a hundred times each") << 10;
}

void MergeTest::manyRecordsDoAndLogWhatThePlainWayDoes()
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

void MergeTest::stepsAndLinesComeInTheirOrder()
{
    unit::LogCapture log(EveryLevel);
    SamplePhone phone;
    provisioning::mergeDefaults(phone, Actions, Keys);
    const QStringList expected{
        QStringLiteral("debug: Processing 3 dm actions and 4 dm keys"),
        QStringLiteral("debug: added action of dmId D1"),
        QStringLiteral("warning: Skipping invalid dm action: too,few"),
        QStringLiteral("debug: added action of dmId D2"),
        QStringLiteral("debug: > all actions"),
        QStringLiteral("debug: found 3 db actions"),
        QStringLiteral("debug: action of id D1 found, modifying"),
        QStringLiteral("debug: > modify Action(4, 'D1', 3, 'call', '', '501', 'Desk', 'Dsk')"),
        QStringLiteral(
            "debug: > ACTION_MODIFY_NTF Action(4, 'D1', 3, 'call', '', '501', 'Desk', 'Dsk')"),
        QStringLiteral("debug: action of id D3 not found, deleting"),
        QStringLiteral("debug: > delete action 7"),
        QStringLiteral("debug: > add Action(-1, 'D2', 5, 'open', '', 'a,b', '', '')"),
        QStringLiteral("debug: > ACTION_CREATE_NTF Action(10, 'D2', 5, 'open', '', 'a,b', '', '')"),
        QStringLiteral("debug: action of id D2 added"),
        QStringLiteral("warning: Skipping invalid dm key: "),
        QStringLiteral("debug: > delete provisioned keys"),
        QStringLiteral("debug: > action of 'D1'"),
        QStringLiteral("debug: > create Key(-1, 'D1', 'main', 4, 0, '', 1, 0, 0)"),
        QStringLiteral("debug: > KEY_CREATE_NTF Key(4, 'D1', 'main', 4, 0, '', 1, 0, 0)"),
        QStringLiteral("debug: > AOM_SET_ICON_PROPERTY_REC 4"),
        QStringLiteral("debug: > action of 'D2'"),
        QStringLiteral("debug: > create Key(-1, 'D2', 'main', 10, 0, '', 0, 0, 0)"),
        QStringLiteral("debug: > KEY_CREATE_NTF Key(5, 'D2', 'main', 10, 0, '', 0, 0, 0)"),
        QStringLiteral("debug: > action of 'D9'"),
    };
    QCOMPARE(log.take(), expected);
}

void MergeTest::aWithdrawnActionIsAskedToGoAndEveryUserRowStays()
{
    unit::LogCapture log(EveryLevel);
    SamplePhone phone;
    provisioning::mergeDefaults(phone, QString(), QString());
    const QStringList asked = log.take().filter(QStringLiteral("> delete action"));
    QCOMPARE(asked, (QStringList{QStringLiteral("debug: > delete action 4"),
                                 QStringLiteral("debug: > delete action 7")}));
    QCOMPARE(phone.actions(), StoredActions);
    QCOMPARE(phone.keys(), StoredKeys.mid(0, 1));
}

void MergeTest::nothingIsLoggedAtLevelThree()
{
    unit::LogCapture log(3);
    SamplePhone phone;
    provisioning::mergeDefaults(phone, Actions, Keys);
    QCOMPARE(log.take(), QStringList());
}

void MergeTest::onlyWarningsAreLoggedAtLevelFour()
{
    unit::LogCapture log(4);
    SamplePhone phone;
    provisioning::mergeDefaults(phone, Actions, Keys);
    QCOMPARE(log.take(), (QStringList{
                             QStringLiteral("warning: Skipping invalid dm action: too,few"),
                             QStringLiteral("warning: Skipping invalid dm key: "),
                         }));
}

PROGKEYS_TEST_MAIN(MergeTest)
#include "MergeTest.moc"
