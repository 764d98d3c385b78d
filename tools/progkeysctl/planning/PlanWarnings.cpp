#include "planning/PlanWarnings.h"

#include "defaults/Messages.h"
#include "planning/PlanFiles.h"

#include <QStringList>

#include <algorithm>

namespace defaults {
namespace {

void warn(QList<PlanWarning> &warnings, const char *code, const QString &message)
{
    warnings.append({QString::fromLatin1(code), message});
}

void warnOfOverwriting(QList<PlanWarning> &warnings, const Plan &plan)
{
    QStringList numbers;
    for (const ChangedAction &changed : plan.changed) {
        if (!changed.action.dmId.isEmpty())
            continue;
        if (changed.action.idAction == ReservedActionId)
            warn(warnings, "reserved-action-overwritten",
                 QStringLiteral("an action without an identifier overwrites the reserved action"));
        else
            numbers.append(QString::number(changed.action.idAction));
    }
    if (!numbers.isEmpty())
        warn(warnings, "user-actions-overwritten",
             QStringLiteral("an action without an identifier overwrites what users made: %1 %2")
                 .arg(numbers.size() == 1 ? QStringLiteral("action") : QStringLiteral("actions"),
                      numbers.join(QStringLiteral(", "))));
}

template <typename Rows, typename Identifier>
int countWithout(const Rows &rows, Identifier identifierOf)
{
    return static_cast<int>(std::count_if(
        rows.cbegin(), rows.cend(), [&](const auto &row) { return identifierOf(row).isEmpty(); }));
}

} // namespace

QList<PlanWarning> warningsOf(const Plan &plan)
{
    QList<PlanWarning> warnings;
    warnOfOverwriting(warnings, plan);
    const int actions = countWithout(plan.added, [](const Action &action) { return action.dmId; });
    if (actions > 0)
        warn(warnings, "action-without-identifier",
             QStringLiteral("%1 without an identifier would be added, and count as made by a user")
                 .arg(counted(actions, QStringLiteral("action"))));
    const int keys = countWithout(plan.made, [](const MadeKey &made) { return made.key.dmId; });
    if (keys > 0)
        warn(warnings, "key-without-identifier",
             QStringLiteral("%1 without an identifier would be made, count as made by a user, and "
                            "be made once more at every start")
                 .arg(counted(keys, QStringLiteral("key"))));
    return warnings;
}

PlanWarning unreadable(const QString &setting, const QString &where)
{
    const QString consequence = setting == LimitSetting
                                    ? QStringLiteral("nothing limits the keys of the set")
                                    : QStringLiteral("it counts as empty");
    return {QStringLiteral("unreadable-setting"),
            QStringLiteral("%1 has no setting %2: %3").arg(where, setting, consequence)};
}

} // namespace defaults
