#include "planning/PlanListing.h"

namespace defaults {
namespace {

const char *const OfAction = "action";
const char *const OfKey = "key";

class Rows
{
public:
    void add(const char *what, const char *kind, const QJsonValue &id, const QString &dmId)
    {
        QJsonObject row{{QStringLiteral("what"), QString::fromLatin1(what)},
                        {QStringLiteral("kind"), QString::fromLatin1(kind)},
                        {QStringLiteral("id"), id},
                        {QStringLiteral("dmId"), dmId}};
        for (const char *name : {"field", "old", "new", "record", "reason"})
            row.insert(QString::fromLatin1(name), QJsonValue());
        m_rows.append(row);
    }

    void add(const char *kind, const QJsonValue &id, const QString &dmId,
             const QList<FieldChange> &changes)
    {
        for (const FieldChange &change : changes) {
            add("changed", kind, id, dmId);
            m_rows.last().insert(QStringLiteral("field"), change.field);
            m_rows.last().insert(QStringLiteral("old"), change.before);
            m_rows.last().insert(QStringLiteral("new"), change.after);
        }
    }

    void explain(int record, const QJsonValue &reason)
    {
        m_rows.last().insert(QStringLiteral("record"), record);
        m_rows.last().insert(QStringLiteral("reason"), reason);
    }

    const QList<QJsonObject> &rows() const { return m_rows; }

private:
    QList<QJsonObject> m_rows;
};

void addActions(Rows &rows, const Plan &plan)
{
    for (const Action &action : plan.added)
        rows.add("added", OfAction, QJsonValue(), action.dmId);
    for (const ChangedAction &changed : plan.changed)
        rows.add(OfAction, changed.action.idAction, changed.action.dmId, changed.changes);
    for (const Action &action : plan.kept)
        rows.add("kept", OfAction, action.idAction, action.dmId);
    for (const LeftAction &left : plan.left)
        rows.add("left", OfAction, left.action.idAction, left.action.dmId);
}

void addMade(Rows &rows, const MadeKey &made)
{
    if (!made.predecessor)
        rows.add("added", OfKey, QJsonValue(), made.key.dmId);
    else if (made.changes.isEmpty())
        rows.add("kept", OfKey, made.predecessor->idKey, made.key.dmId);
    else
        rows.add(OfKey, made.predecessor->idKey, made.key.dmId, made.changes);
}

void addKeys(Rows &rows, const Plan &plan)
{
    for (const MadeKey &made : plan.made)
        addMade(rows, made);
    for (const RemovedKey &removed : plan.removed) {
        if (!removed.successor)
            rows.add("removed", OfKey, removed.key.idKey, removed.key.dmId);
    }
    for (const DroppedKey &dropped : plan.dropped) {
        rows.add("dropped", OfKey, QJsonValue(), dropped.key.dmId);
        rows.explain(dropped.record,
                     dropped.setKeys ? QStringLiteral("limit") : QStringLiteral("no action"));
    }
}

} // namespace

output::Listing listingOf(const Plan &plan)
{
    Rows rows;
    addActions(rows, plan);
    addKeys(rows, plan);
    for (const RefusedRecord &refused : plan.refused) {
        rows.add("refused", refused.kind == Kind::Actions ? OfAction : OfKey, QJsonValue(),
                 QString());
        rows.explain(refused.record, refused.fault);
    }
    output::Listing listing;
    listing.rows = rows.rows();
    for (const char *name :
         {"what", "kind", "id", "dmId", "field", "old", "new", "record", "reason"})
        listing.columns.append({QString::fromLatin1(name), QString::fromLatin1(name).toUpper()});
    return listing;
}

} // namespace defaults
