#include "planning/Plan.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

using defaults::Plan;

Q_DECLARE_METATYPE(std::optional<int>)

namespace {

constexpr int EveryLevel = 7;

Action action(qlonglong idAction, const char *dmId, const char *label)
{
    Action action;
    action.idAction = idAction;
    action.dmId = QString::fromLatin1(dmId);
    action.type = idAction == ReservedActionId ? -1 : 1;
    action.label = QString::fromLatin1(label);
    return action;
}

Key key(qlonglong idKey, const char *dmId, qlonglong idAction, int position, int type)
{
    Key key;
    key.idKey = idKey;
    key.dmId = QString::fromLatin1(dmId);
    key.idAction = idAction;
    key.container = QStringLiteral("home");
    key.position = position;
    key.type = type;
    key.aom_type = 0;
    key.aom_addr = 0;
    return key;
}

// Two provisioned actions with a key each, one of them on a module, and a user's action and key.
const ListAction Actions{action(ReservedActionId, "", ""), action(3, "D1", "Desk"),
                         action(5, "D2", "Door"), action(7, "", "Mine")};
const ListKey Keys{key(1, "D1", 3, 0, KeyType::Set), key(2, "D2", 5, 1, KeyType::AddOnModule),
                   key(3, "", 7, 2, KeyType::Set), key(4, "", 5, 3, KeyType::Set)};

const char *const SameActions = "D1,1,,,,Desk,#D2,1,,,,Door,";
const char *const SameKeys = "D1,home,0,,0,0,0#D2,home,1,,1,0,0";

QString text(const QByteArray &latin1)
{
    return QString::fromLatin1(latin1);
}

Plan plan(const QByteArray &actions, const QByteArray &keys, std::optional<int> limit = {})
{
    return defaults::planOf(Actions, Keys, {text(actions), text(keys), limit});
}

// The rows, each the values of its columns that are not null; `new` and `old` of whole rows and the
// text for people are left out.
QStringList rowsOf(const Plan &plan)
{
    QStringList rows;
    for (const QJsonObject &row : plan.rows) {
        const bool hasField = !row.value(QStringLiteral("field")).isNull();
        QStringList words;
        for (const char *name :
             {"what", "kind", "id", "dmId", "field", "old", "new", "record", "reason"}) {
            const QString column = QString::fromLatin1(name);
            const bool isDescription =
                !hasField && (column == QLatin1String("old") || column == QLatin1String("new"));
            if (!isDescription && !row.value(column).isNull())
                words.append(output::displayText(row.value(column)));
        }
        rows.append(words.join(QLatin1Char(' ')));
    }
    return rows;
}

void addRow(const char *name, const QByteArray &actions, const QByteArray &keys,
            const QStringList &rows, bool hasChanges, std::optional<int> limit = {})
{
    QTest::newRow(name) << actions << keys << limit << rows << hasChanges;
}

} // namespace

/// What is planned for the rows of a phone.
class PlanTest : public QObject
{
    Q_OBJECT

private slots:
    void eachOutcomeIsARow_data();
    void eachOutcomeIsARow();
    void aRowThatIsAddedHasItsContent();
    void aKeyOfAMissingActionIsNotTheSameAsOneOfANewAction();
    void theListingSumsUp();
    void nothingIsLogged();
};

void PlanTest::eachOutcomeIsARow_data()
{
    QTest::addColumn<QByteArray>("actions");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<std::optional<int>>("limit");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<bool>("hasChanges");
    const QString first = QStringLiteral("kept action 3 D1");
    const QString second = QStringLiteral("kept action 5 D2");
    const QStringList actions{first, second};
    const QString firstKey = QStringLiteral("kept key 1 D1 1");
    const QString secondKey = QStringLiteral("kept key 2 D2 2");
    const QStringList keys{firstKey, secondKey};
    const QString withdrawn = QStringLiteral("withdrawn action 3 D1 stays in the database");
    const QString used = QStringLiteral("withdrawn action 5 D2 stays in the database, user keys "
                                        "that trigger it: 1");
    const QStringList removed{QStringLiteral("removed key 1 D1"),
                              QStringLiteral("removed key 2 D2")};

    addRow("the same settings change nothing", SameActions, SameKeys, actions + keys, false);
    addRow("the order of the records changes nothing", "D2,1,,,,Door,#D1,1,,,,Desk,",
           "D2,home,1,,1,0,0#D1,home,0,,0,0,0",
           actions +
               QStringList{QStringLiteral("kept key 2 D2 1"), QStringLiteral("kept key 1 D1 2")},
           false);
    addRow("empty settings leave the actions and remove the keys", "", "",
           QStringList{withdrawn, used} + removed, true);
    addRow("a change has a row for each field", "D1,2,,,,New,#D2,1,,,,Door,", SameKeys,
           QStringList{QStringLiteral("changed action 3 D1 type 1 2"),
                       QStringLiteral("changed action 3 D1 label Desk New"), second} +
               keys,
           true);
    addRow("the last record of a repeated identifier applies to a stored action",
           "D1,1,,,,Other,#D2,1,,,,Door,#D1,1,,,,Desk,", SameKeys, actions + keys, false);
    addRow("each record of a repeated identifier is added as a new action",
           QByteArray(SameActions) + "#N,1,,,,A,#N,1,,,,B,", SameKeys,
           actions +
               QStringList{QStringLiteral("added action N"), QStringLiteral("added action N")} +
               keys,
           true);
    addRow("a key at another position is changed", SameActions, "D1,home,9,,0,0,0#D2,home,1,,1,0,0",
           actions + QStringList{QStringLiteral("changed key 1 D1 position 0 9 1"), secondKey},
           true);
    addRow("of several keys the one at the same place is the successor", SameActions,
           "D1,home,9,,0,0,0#D1,home,0,bell,0,0,0#D2,home,1,,1,0,0",
           actions + QStringList{QStringLiteral("added key D1 1"),
                                 QStringLiteral("changed key 1 D1 icon  bell 2"),
                                 QStringLiteral("kept key 2 D2 3")},
           true);
    addRow("a key without an action is dropped", SameActions,
           QByteArray(SameKeys) + "#none,home,5,,0,0,0",
           actions + QStringList{QStringLiteral("dropped key none 3 no such action")} + keys,
           false);
    addRow("a key triggers an action that was withdrawn", "D2,1,,,,Door,", SameKeys,
           QStringList{withdrawn, second} + keys, false);
    addRow("keys of users count towards the limit", SameActions, SameKeys,
           actions + QStringList{QStringLiteral("dropped key D1 1 key limit reached"), secondKey,
                                 removed.first()},
           true, 2);
    addRow("the limit is not reached", SameActions, SameKeys, actions + keys, false, 3);
    addRow("a negative limit is like 0", SameActions, "D1,home,0,,0,0,0",
           actions + QStringList{QStringLiteral("dropped key D1 1 key limit reached")} + removed,
           true, -1);
    addRow("refused records have their numbers", QByteArray("D1,too,few#") + SameActions,
           QByteArray(SameKeys) + "#",
           actions + keys +
               QStringList{QStringLiteral("refused action  1 3 instead of 7 fields"),
                           QStringLiteral("refused key  3 1 instead of 7 fields")},
           false);
    addRow("an action without identifier overwrites all that have none",
           QByteArray(SameActions) + "#,1,,,,New,", QByteArray(SameKeys) + "#,home,4,,0,0,0",
           QStringList{QStringLiteral("changed action -1  type -1 1 no identifier: overwrites the "
                                      "reserved action"),
                       QStringLiteral("changed action -1  label  New no identifier: overwrites "
                                      "the reserved action"),
                       first, second,
                       QStringLiteral("changed action 7  label Mine New no identifier: overwrites "
                                      "a user's action")} +
               keys +
               QStringList{QStringLiteral("added key  3 no identifier: becomes a user's "
                                          "key, another at each start")},
           true);
}

void PlanTest::eachOutcomeIsARow()
{
    QFETCH(QByteArray, actions);
    QFETCH(QByteArray, keys);
    QFETCH(std::optional<int>, limit);
    QFETCH(QStringList, rows);
    const Plan found = plan(actions, keys, limit);
    QCOMPARE(rowsOf(found), rows);
    QTEST(found.hasChanges(), "hasChanges");
    QCOMPARE(found.hasRefusedRecords(),
             rows.join(QLatin1Char('|')).contains(QLatin1String("refused")));
}

void PlanTest::aRowThatIsAddedHasItsContent()
{
    const Plan found = plan("N,1,call,,,New,#,1,,,,None,", "N,home,0,,0,0,0");
    const auto contentOf = [&](const char *dmId, const char *kind) {
        for (const QJsonObject &row : found.rows) {
            if (row.value(QStringLiteral("dmId")) == QLatin1String(dmId) &&
                row.value(QStringLiteral("kind")) == QLatin1String(kind))
                return row.value(QStringLiteral("content")).toObject();
        }
        return QJsonObject();
    };
    const QJsonObject action = contentOf("N", "action");
    QCOMPARE(action.value(QStringLiteral("label")), QJsonValue(QStringLiteral("New")));
    QVERIFY(action.value(QStringLiteral("idAction")).isNull());
    const QJsonObject key = contentOf("N", "key");
    QCOMPARE(key.value(QStringLiteral("container")), QJsonValue(QStringLiteral("home")));
    QVERIFY(key.value(QStringLiteral("idKey")).isNull());
    QVERIFY(key.value(QStringLiteral("idAction")).isNull());
}

void PlanTest::aKeyOfAMissingActionIsNotTheSameAsOneOfANewAction()
{
    const ListKey keys{key(1, "N", ReservedActionId, 0, KeyType::Set)};
    const Plan found = defaults::planOf(
        Actions, keys, {text("N,1,,,,New,"), text("N,home,0,,0,0,0"), std::nullopt});
    const QJsonObject row = found.rows.last();
    QCOMPARE(row.value(QStringLiteral("field")), QJsonValue(QStringLiteral("idAction")));
    QCOMPARE(row.value(QStringLiteral("old")), QJsonValue(ReservedActionId));
    QVERIFY(row.value(QStringLiteral("new")).isNull());
}

void PlanTest::theListingSumsUp()
{
    const Plan found = plan("D1,2,,,,New,#D2,1,,,,Door,", SameKeys);
    QCOMPARE(found.listing(false).rows.size(), 2);
    QCOMPARE(found.listing(true).rows.size(), 5);
    QCOMPARE(found.listing(false).legend,
             QStringLiteral("Actions: 1 changed, 1 kept\nKeys: 2 kept"));
    QCOMPARE(plan(SameActions, SameKeys).listing(false).legend,
             QStringLiteral("Actions: 2 kept\nKeys: 2 kept\nNo changes."));
}

void PlanTest::nothingIsLogged()
{
    unit::LogCapture log(EveryLevel);
    plan("too,few", "too,few");
    QCOMPARE(log.take(), QStringList());
}

PROGKEYS_TEST_MAIN(PlanTest)
#include "PlanTest.moc"
