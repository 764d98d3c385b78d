#include "planning/PlanText.h"

#include "defaults/Messages.h"
#include "planning/PlanFiles.h"
#include "planning/PlanLayout.h"

#include <algorithm>

namespace defaults {
namespace {

constexpr int SumIndent = 2;

QString quotedText(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString keys(int count)
{
    return counted(count, QStringLiteral("key"));
}

QString nameOf(const Action &action)
{
    if (!action.dmId.isEmpty())
        return action.dmId;
    if (action.idAction == ReservedActionId)
        return QStringLiteral("(reserved action)");
    return QStringLiteral("(user's action %1)").arg(action.idAction);
}

QString nameOf(const Key &key)
{
    return key.dmId.isEmpty() ? QStringLiteral("(no identifier)") : key.dmId;
}

QString placeOf(const Key &key)
{
    const QString position = QString::number(key.position);
    if (key.type == KeyType::Set)
        return QStringLiteral("position %1 of %2").arg(position, quotedText(key.container));
    if (key.type == KeyType::AddOnModule)
        return QStringLiteral("key %1 of the add-on module at %2")
            .arg(position, QString::number(key.aom_addr));
    return QStringLiteral("position %1 of %2, type %3")
        .arg(position, quotedText(key.container), QString::number(key.type));
}

// The parts that count something: "2 added, 1 changed".
class Sum
{
public:
    void add(qsizetype count, const char *what)
    {
        if (count > 0)
            m_parts.append(
                QStringLiteral("%1 %2").arg(QString::number(count), QString::fromLatin1(what)));
    }
    QString text() const
    {
        return m_parts.isEmpty() ? QStringLiteral("none") : m_parts.join(QStringLiteral(", "));
    }

private:
    QStringList m_parts;
};

template <typename Rows, typename Predicate>
int countIf(const Rows &rows, Predicate predicate)
{
    return static_cast<int>(std::count_if(rows.cbegin(), rows.cend(), predicate));
}

bool isNew(const MadeKey &made)
{
    return !made.predecessor;
}

bool isSame(const MadeKey &made)
{
    return made.predecessor && made.changes.isEmpty();
}

bool isGone(const RemovedKey &removed)
{
    return !removed.successor;
}

QString actionSum(const Plan &plan)
{
    Sum sum;
    sum.add(plan.added.size(), "added");
    sum.add(plan.changed.size(), "changed");
    sum.add(plan.kept.size(), "kept");
    sum.add(plan.left.size(), "withdrawn but left");
    return QStringLiteral("Actions: ") + sum.text();
}

QString keySum(const Plan &plan)
{
    const int others = countIf(plan.made, isNew);
    const int same = countIf(plan.made, isSame);
    Sum sum;
    sum.add(others, "new");
    sum.add(plan.made.size() - others - same, "changed");
    sum.add(same, "unchanged");
    sum.add(countIf(plan.removed, isGone), "gone");
    sum.add(plan.dropped.size(), "dropped");
    const bool isAny = !plan.made.isEmpty();
    return (isAny ? QStringLiteral("Keys, all made anew: ") : QStringLiteral("Keys: ")) +
           sum.text();
}

QString whatBecomesOfKeys(const LeftAction &left)
{
    QStringList parts;
    if (left.removedKeys > 0 && left.madeKeys == 0)
        parts.append(left.removedKeys == 1
                         ? QStringLiteral("its provisioned key goes")
                         : QStringLiteral("its %1 provisioned keys go").arg(left.removedKeys));
    if (left.madeKeys > 0)
        parts.append(QStringLiteral("%1 still made for it").arg(keys(left.madeKeys)));
    if (left.userKeys > 0)
        parts.append(QStringLiteral("%1 of users still bound to it").arg(keys(left.userKeys)));
    return parts.isEmpty() ? QString() : QStringLiteral("; ") + parts.join(QStringLiteral(", "));
}

QString whyDropped(const DroppedKey &dropped, const Plan &plan)
{
    if (!dropped.setKeys)
        return QStringLiteral("dropped, record %1: no action has this identifier")
            .arg(dropped.record);
    return QStringLiteral("dropped, record %1: the set has %2, and the limit is %3")
        .arg(QString::number(dropped.record), keys(*dropped.setKeys),
             QString::number(plan.limit.value_or(0)));
}

QList<PlanEntry> actionEntries(const Plan &plan, bool hasAll)
{
    QList<PlanEntry> entries;
    for (const Action &action : plan.added) {
        const bool isNamed = !action.dmId.isEmpty();
        entries.append({isNamed ? Mark::Added : Mark::Attention,
                        isNamed ? action.dmId : QStringLiteral("(no identifier)"),
                        quotedText(action.label.isEmpty() ? action.action : action.label),
                        {}});
    }
    for (const ChangedAction &changed : plan.changed) {
        const bool isOfUser = changed.action.dmId.isEmpty();
        entries.append(
            {isOfUser ? Mark::Attention : Mark::Changed, nameOf(changed.action),
             isOfUser ? QStringLiteral("overwritten, for want of an identifier") : QString(),
             changed.changes});
    }
    if (hasAll) {
        for (const Action &action : plan.kept)
            entries.append({Mark::Kept, nameOf(action), quotedText(action.label), {}});
    }
    for (const LeftAction &left : plan.left)
        entries.append(
            {Mark::Attention,
             nameOf(left.action),
             QStringLiteral("stays: nobody deletes a provisioned action") + whatBecomesOfKeys(left),
             {}});
    return entries;
}

void addMade(QList<PlanEntry> &entries, const MadeKey &made, bool hasAll)
{
    if (isNew(made))
        entries.append({made.key.dmId.isEmpty() ? Mark::Attention : Mark::Added,
                        nameOf(made.key),
                        placeOf(made.key),
                        {}});
    else if (!made.changes.isEmpty())
        entries.append({Mark::Changed, nameOf(made.key), placeOf(*made.predecessor), made.changes});
    else if (hasAll)
        entries.append({Mark::Kept, nameOf(made.key), placeOf(made.key), {}});
}

QList<PlanEntry> keyEntries(const Plan &plan, bool hasAll)
{
    QList<PlanEntry> entries;
    for (const MadeKey &made : plan.made)
        addMade(entries, made, hasAll);
    for (const RemovedKey &removed : plan.removed) {
        if (isGone(removed))
            entries.append({Mark::Removed, nameOf(removed.key), placeOf(removed.key), {}});
    }
    for (const DroppedKey &dropped : plan.dropped)
        entries.append({Mark::Attention, nameOf(dropped.key), whyDropped(dropped, plan), {}});
    return entries;
}

QList<PlanEntry> refusedEntries(const Plan &plan)
{
    QList<PlanEntry> entries;
    for (const RefusedRecord &refused : plan.refused) {
        const QString setting = refused.kind == Kind::Actions ? ActionsSetting : KeysSetting;
        entries.append({Mark::Attention,
                        QStringLiteral("%1 %2").arg(setting, QString::number(refused.record)),
                        refused.fault,
                        {}});
    }
    return entries;
}

class Account
{
public:
    Account(const PlanView &view, const output::Terminal &terminal)
        : m_view(view), m_terminal(terminal)
    {
    }

    void sum(const QString &text)
    {
        if (!m_view.hasSums)
            return;
        const QStringList lines = wrapped(text, m_terminal.width(), SumIndent);
        for (const QString &line : lines)
            m_lines.append(m_terminal.bold(line));
    }
    void entries(const QList<PlanEntry> &entries) { m_lines += laidOut(entries, m_terminal); }
    void say(const QString &text) { m_lines += wrapped(text, m_terminal.width()); }

    const QStringList &lines() const { return m_lines; }

private:
    const PlanView &m_view;
    const output::Terminal &m_terminal;
    QStringList m_lines;
};

} // namespace

QStringList linesOf(const Plan &plan, const PlanView &view, const output::Terminal &terminal)
{
    Account account(view, terminal);
    account.sum(actionSum(plan));
    account.entries(actionEntries(plan, view.hasAll));
    account.sum(keySum(plan));
    account.entries(keyEntries(plan, view.hasAll));
    if (!plan.refused.isEmpty()) {
        account.sum(QStringLiteral("Records refused: %1").arg(plan.refused.size()));
        account.entries(refusedEntries(plan));
        account.say(
            QStringLiteral("\"progkeysctl defaults check\" shows what is wrong with them."));
    }
    if (!plan.hasChanges() && view.hasSums)
        account.say(QStringLiteral("Nothing is to be changed."));
    return account.lines();
}

} // namespace defaults
