#include "planning/Plan.h"
#include "provisioning/RandomPhone.h"
#include "support/Samples.h"
#include "support/TestMain.h"

#include <zelcore/ZELLogger.h>

#include <algorithm>

using defaults::Plan;

namespace {

constexpr int Phones = 500;
constexpr int StartsOfEach = 3;

QStringList described(const ListAction &actions)
{
    QStringList rows;
    for (const Action &action : actions)
        rows.append(describe(action));
    return rows;
}

QStringList described(const ListKey &keys)
{
    QStringList rows;
    for (const Key &key : keys)
        rows.append(describe(key));
    return rows;
}

bool isNamed(const ListAction &actions, qlonglong idAction)
{
    return std::any_of(actions.cbegin(), actions.cend(),
                       [&](const Action &action) { return action.idAction == idAction; });
}

// Provisioned keys by what they hold; users' keys by their numbers, too.
QStringList visible(ListKey keys)
{
    for (Key &key : keys)
        key.idKey = key.dmId.isEmpty() ? key.idKey : 0;
    QStringList rows = described(keys);
    rows.sort();
    return rows;
}

/// A phone before and after the service's merge, and what was planned for it.
struct Start
{
    ListAction actionsBefore;
    ListKey keysBefore;
    Plan plan;
    ListAction actionsAfter;
    ListKey keysAfter;

    bool isOfTheChanged(qlonglong idAction) const
    {
        return std::any_of(plan.changed.cbegin(), plan.changed.cend(), [&](const auto &changed) {
            return changed.action.idAction == idAction;
        });
    }
};

Start start(unit::MemoryPhone &phone, const unit::Rollout &rollout)
{
    Start start;
    start.actionsBefore = phone.actions();
    start.keysBefore = phone.keys();
    start.plan = defaults::planOf(start.actionsBefore, start.keysBefore,
                                  {rollout.actions, rollout.keys, phone.keyLimit});
    provisioning::mergeDefaults(phone, rollout.actions, rollout.keys);
    start.actionsAfter = phone.actions();
    start.keysAfter = phone.keys();
    return start;
}

QString faultInActions(const Start &start)
{
    const auto known = start.actionsBefore.size();
    for (int place = 0; place < known; ++place) {
        const Action &before = start.actionsBefore.at(place);
        const Action &after = start.actionsAfter.at(place);
        if (start.isOfTheChanged(before.idAction) == (before == after))
            return QStringLiteral("%1 became %2").arg(describe(before), describe(after));
    }
    ListAction added = start.actionsAfter.mid(known);
    for (Action &action : added)
        action.idAction = Action().idAction;
    if (added == start.plan.added)
        return {};
    return QStringLiteral("%1 added").arg(described(added).join(QLatin1Char(';')));
}

QString faultInKeys(const Start &start)
{
    ListKey expected;
    for (const Key &key : start.keysBefore) {
        if (key.dmId.isEmpty())
            expected.append(key);
    }
    const auto users = expected.size();
    for (const defaults::MadeKey &made : start.plan.made) {
        expected.append(made.key);
        expected.last().idAction = made.hasNewAction ? 0 : made.key.idAction;
    }
    ListKey found = start.keysAfter;
    for (auto place = users; place < found.size(); ++place) {
        Key &key = found[place];
        key.idKey = Key().idKey;
        key.idAction = isNamed(start.actionsBefore, key.idAction) ? key.idAction : 0;
    }
    if (found == expected)
        return {};
    return QStringLiteral("%1 instead of %2")
        .arg(described(found).join(QLatin1Char(';')), described(expected).join(QLatin1Char(';')));
}

QString faultIn(const Start &start)
{
    const bool isSame = start.actionsBefore == start.actionsAfter &&
                        visible(start.keysBefore) == visible(start.keysAfter);
    if (isSame == start.plan.hasChanges())
        return QStringLiteral("changes: %1").arg(!isSame);
    const QString fault = faultInActions(start);
    return fault.isEmpty() ? faultInKeys(start) : fault;
}

} // namespace

/// Plans against what the service's merge then does.
class PlanMergeTest : public QObject
{
    Q_OBJECT

private slots:
    void whatIsPlannedIsDone_data() { unit::addSeeds(); }
    void whatIsPlannedIsDone();
};

void PlanMergeTest::whatIsPlannedIsDone()
{
    QFETCH(unsigned, seed);
    ZELLogger::setConfiguredLevel(0);
    unit::Random random(seed);
    for (int number = 0; number < Phones; ++number) {
        unit::MemoryPhone phone;
        unit::fill(phone, random, 6);
        phone.labelThatCannotBeStored.clear();
        for (int count = 0; count < StartsOfEach; ++count) {
            const unit::Rollout rollout = unit::randomRollout(random, 6);
            const QString fault = faultIn(start(phone, rollout));
            QVERIFY2(fault.isEmpty(),
                     qPrintable(QStringLiteral("%1 for DefaultActions=%2 and DefaultKeys=%3")
                                    .arg(fault, rollout.actions, rollout.keys)));
        }
    }
}

PROGKEYS_TEST_MAIN(PlanMergeTest)
#include "PlanMergeTest.moc"
