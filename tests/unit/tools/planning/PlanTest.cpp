#include "planning/Plan.h"
#include "planning/PlanListing.h"
#include "planning/PlanWarnings.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <zelcore/ZELLogger.h>

using defaults::Plan;
using defaults::PlannedSettings;

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

// The rows of the listing, each the words of its fields that are not null.
QStringList rowsOf(const Plan &plan)
{
    const output::Listing listing = defaults::listingOf(plan);
    QStringList rows;
    for (const QJsonObject &row : listing.rows) {
        QStringList words;
        for (const output::Column &column : listing.columns) {
            if (!row.value(column.name).isNull())
                words.append(output::displayText(row.value(column.name)));
        }
        rows.append(words.join(QLatin1Char(' ')));
    }
    return rows;
}

QStringList codesOf(const QList<defaults::PlanWarning> &warnings)
{
    QStringList codes;
    for (const defaults::PlanWarning &warning : warnings)
        codes.append(warning.code);
    return codes;
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
    void everyRowIsToldOf_data();
    void everyRowIsToldOf();
    void keysOfALeftActionAreCounted();
    void aKeyOfANewActionNamesNoNumber();
    void anOrphanBoundToTheReservedNumberIsNotTheSameAsAKeyOfANewAction();
    void emptyIdentifiersAreWarnedOf_data();
    void emptyIdentifiersAreWarnedOf();
    void nothingIsLoggedAndTheLevelStays();
};

void PlanTest::everyRowIsToldOf_data()
{
    QTest::addColumn<QByteArray>("actions");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<std::optional<int>>("limit");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<bool>("hasChanges");
    const QString first = QStringLiteral("kept action 3 D1");
    const QString second = QStringLiteral("kept action 5 D2");
    const QStringList keys{QStringLiteral("kept key 1 D1"), QStringLiteral("kept key 2 D2")};
    const QStringList kept = QStringList{first, second} + keys;

    addRow("the same again is no change", SameActions, SameKeys, kept, false);
    addRow("the order of the records is no change", "D2,1,,,,Door,#D1,1,,,,Desk,",
           "D2,home,1,,1,0,0#D1,home,0,,0,0,0",
           {first, second, QStringLiteral("kept key 2 D2"), QStringLiteral("kept key 1 D1")},
           false);
    addRow("empty settings leave the actions and take the keys", "", "",
           {QStringLiteral("left action 3 D1"), QStringLiteral("left action 5 D2"),
            QStringLiteral("removed key 1 D1"), QStringLiteral("removed key 2 D2")},
           true);
    addRow("a change is told field by field", "D1,2,,,,New,#D2,1,,,,Door,", SameKeys,
           QStringList{QStringLiteral("changed action 3 D1 type 1 2"),
                       QStringLiteral("changed action 3 D1 label Desk New"), second} +
               keys,
           true);
    addRow("the last content of a repeated identifier wins where the action is stored",
           "D1,1,,,,Other,#D2,1,,,,Door,#D1,1,,,,Desk,", SameKeys, kept, false);
    addRow("both of a repeated identifier are added where it is new",
           QByteArray(SameActions) + "#N,1,,,,A,#N,1,,,,B,", SameKeys,
           QStringList{QStringLiteral("added action N"), QStringLiteral("added action N")} + kept,
           true);
    addRow("a key that moves is changed", SameActions, "D1,home,9,,0,0,0#D2,home,1,,1,0,0",
           {first, second, QStringLiteral("changed key 1 D1 position 0 9"),
            QStringLiteral("kept key 2 D2")},
           true);
    addRow("of several keys the one at the same place is the successor", SameActions,
           "D1,home,9,,0,0,0#D1,home,0,bell,0,0,0#D2,home,1,,1,0,0",
           {first, second, QStringLiteral("added key D1"),
            QStringLiteral("changed key 1 D1 icon  bell"), QStringLiteral("kept key 2 D2")},
           true);
    addRow("a key without an action is dropped", SameActions,
           QByteArray(SameKeys) + "#none,home,5,,0,0,0",
           kept + QStringList{QStringLiteral("dropped key none 3 no action")}, false);
    addRow("a key is bound to an action that was withdrawn", "D2,1,,,,Door,", SameKeys,
           QStringList{second, QStringLiteral("left action 3 D1")} + keys, false);
    addRow("keys of users count against the limit", SameActions, SameKeys,
           {first, second, QStringLiteral("kept key 2 D2"), QStringLiteral("removed key 1 D1"),
            QStringLiteral("dropped key D1 1 limit")},
           true, 2);
    addRow("the limit has room", SameActions, SameKeys, kept, false, 3);
    addRow("a limit below 0 is as one of 0", SameActions, "D1,home,0,,0,0,0",
           {first, second, QStringLiteral("removed key 1 D1"), QStringLiteral("removed key 2 D2"),
            QStringLiteral("dropped key D1 1 limit")},
           true, -1);
    addRow("refused records are told with their number", QByteArray("D1,too,few#") + SameActions,
           QByteArray(SameKeys) + "#",
           kept + QStringList{QStringLiteral("refused action  1 3 instead of 7 fields"),
                              QStringLiteral("refused key  3 1 instead of 7 fields")},
           false);
    addRow("an empty identifier overwrites what has none, and its key comes besides",
           QByteArray(SameActions) + "#,1,,,,Mine,", QByteArray(SameKeys) + "#,home,4,,0,0,0",
           QStringList{QStringLiteral("changed action -1  type -1 1"),
                       QStringLiteral("changed action -1  label  Mine"), first, second,
                       QStringLiteral("kept action 7 ")} +
               keys + QStringList{QStringLiteral("added key ")},
           true);
}

void PlanTest::everyRowIsToldOf()
{
    QFETCH(QByteArray, actions);
    QFETCH(QByteArray, keys);
    QFETCH(std::optional<int>, limit);
    QFETCH(QStringList, rows);
    const Plan found = plan(actions, keys, limit);
    QCOMPARE(rowsOf(found), rows);
    QTEST(found.hasChanges(), "hasChanges");
}

void PlanTest::keysOfALeftActionAreCounted()
{
    const Plan found = plan("", "D2,home,1,,1,0,0#D2,home,2,,1,0,0");
    QCOMPARE(found.left.size(), 2);
    const defaults::LeftAction &left = found.left.last();
    QCOMPARE(left.action.dmId, QStringLiteral("D2"));
    QCOMPARE(left.removedKeys, 1);
    QCOMPARE(left.madeKeys, 2);
    QCOMPARE(left.userKeys, 1);
}

void PlanTest::aKeyOfANewActionNamesNoNumber()
{
    const Plan found = plan("N,1,,,,New,", "N,home,0,,0,0,0");
    QCOMPARE(found.added.size(), 1);
    QCOMPARE(found.added.first().idAction, Action().idAction);
    QCOMPARE(found.made.size(), 1);
    QVERIFY(found.made.first().hasNewAction);
    QCOMPARE(found.made.first().key.idAction, Key().idAction);
}

void PlanTest::anOrphanBoundToTheReservedNumberIsNotTheSameAsAKeyOfANewAction()
{
    const ListKey keys{key(1, "N", ReservedActionId, 0, KeyType::Set)};
    const Plan found = defaults::planOf(
        Actions, keys, {text("N,1,,,,New,"), text("N,home,0,,0,0,0"), std::nullopt});
    QCOMPARE(found.made.size(), 1);
    QCOMPARE(found.made.first().changes.size(), 1);
    QCOMPARE(found.made.first().changes.first().field, QStringLiteral("idAction"));
    QCOMPARE(found.made.first().changes.first().before, QJsonValue(ReservedActionId));
    QCOMPARE(found.made.first().changes.first().after, QJsonValue());
}

void PlanTest::emptyIdentifiersAreWarnedOf_data()
{
    QTest::addColumn<QByteArray>("actions");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QStringList>("codes");
    const QString user = QStringLiteral("user-actions-overwritten");
    const QString reserved = QStringLiteral("reserved-action-overwritten");
    const QString key = QStringLiteral("key-without-identifier");
    QTest::newRow("an action") << QByteArray(",1,,,,X,") << QByteArray()
                               << QStringList{reserved, user};
    QTest::newRow("an action as the user's is")
        << QByteArray(",1,,,,Mine,") << QByteArray() << QStringList{reserved};
    QTest::newRow("a key") << QByteArray() << QByteArray(",home,0,,0,0,0") << QStringList{key};
    QTest::newRow("identifiers everywhere")
        << QByteArray(SameActions) << QByteArray(SameKeys) << QStringList();
}

void PlanTest::emptyIdentifiersAreWarnedOf()
{
    QFETCH(QByteArray, actions);
    QFETCH(QByteArray, keys);
    QTEST(codesOf(defaults::warningsOf(plan(actions, keys))), "codes");
    const ListAction reservedAlone{Actions.first()};
    const Plan added = defaults::planOf(reservedAlone, {}, {text(",1,,,,X,"), {}, {}});
    QCOMPARE(codesOf(defaults::warningsOf(added)),
             (QStringList{QStringLiteral("reserved-action-overwritten"),
                          QStringLiteral("action-without-identifier")}));
}

void PlanTest::nothingIsLoggedAndTheLevelStays()
{
    unit::LogCapture log(EveryLevel);
    plan("too,few", "too,few");
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(ZELLogger::getConfiguredLevel(), EveryLevel);
}

PROGKEYS_TEST_MAIN(PlanTest)
#include "PlanTest.moc"
