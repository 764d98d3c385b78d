#include "planning/Plan.h"

#include "fields/Fields.h"
#include "fields/Places.h"
#include "planning/PlanTarget.h"
#include "provisioning/ProvisionedRecords.h"
#include "text/Format.h"

#include <algorithm>

namespace defaults {
namespace {

using fields::described;
using provisioning::Record;

const QString OfAction = "action"_s;
const QString OfKey = "key"_s;

const QString Added = "added"_s;
const QString Changed = "changed"_s;
const QString Kept = "kept"_s;
const QString Removed = "removed"_s;
const QString Withdrawn = "withdrawn"_s;
const QString Dropped = "dropped"_s;
const QString Refused = "refused"_s;

const QString What = "what"_s;
const QString RowKind = "kind"_s;
const QString Id = "id"_s;
const QString DmId = "dmId"_s;
const QString FieldName = "field"_s;
const QString Old = "old"_s;
const QString New = "new"_s;
const QString RecordNumber = "record"_s;
const QString Reason = "reason"_s;
const QString Detail = "detail"_s;
const QString Content = "content"_s;

const QString IdKey = "idKey"_s;
const QString IdAction = "idAction"_s;

// A key that is created, and the provisioned key that it replaces: the merge deletes all of them.
struct CreatedKey
{
    Key key;
    int record = 0;
    const Key *predecessor = nullptr;
};

// The fields of a key after the merge. The id of a new action is null.
QJsonObject contentOf(const Key &key, const QJsonValue &idKey)
{
    QJsonObject content = fields::toJson(key);
    content.insert(IdKey, idKey);
    if (key.idAction == NewActionId)
        content.insert(IdAction, QJsonValue());
    return content;
}

// The fields in which two records differ, each with its old and new value.
template <typename Row>
QList<QJsonObject> changesBetween(const QJsonObject &before, const QJsonObject &after)
{
    QList<QJsonObject> changes;
    for (const fields::Field &field : fields::of<Row>()) {
        const QJsonValue now = before.value(field.name);
        const QJsonValue then = after.value(field.name);
        if (now != then)
            changes.append({{FieldName, field.name}, {Old, now}, {New, then}});
    }
    return changes;
}

QList<QJsonObject> changesTo(const CreatedKey &created, const Key &before)
{
    return changesBetween<Key>(fields::toJson(before),
                               contentOf(created.key, output::jsonNumber(before.idKey)));
}

// An empty setting provisions nothing; to the parser it is one empty record.
QList<Record> recordsOf(const QString &text)
{
    return text.isEmpty() ? QList<Record>() : provisioning::parseText(text);
}

// Makes each key that is like a removed one its successor, and takes that one off the list.
template <typename Likeness>
void pairWhere(QList<CreatedKey> &created, QList<const Key *> &removed, Likeness isAlike)
{
    const auto hasSuccessor = [&](const Key *before) {
        for (CreatedKey &each : created) {
            if (each.predecessor || each.key.dmId != before->dmId || !isAlike(each, *before))
                continue;
            each.predecessor = before;
            return true;
        }
        return false;
    };
    removed.erase(std::remove_if(removed.begin(), removed.end(), hasSuccessor), removed.end());
}

// Describes the effects of a merge as rows.
class Planner
{
public:
    Planner(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings);

    QList<QJsonObject> plan();

private:
    void add(const QString &what, const QString &kind, const QJsonValue &id, const QString &dmId,
             const QJsonObject &others);
    void planAction(const Action &before, const Action &after);
    QString withdrawal(const Action &action) const;
    QList<CreatedKey> createdKeys();
    void planKeys();
    void planCreatedKey(const CreatedKey &created);
    void planRefusedRecords(const QString &kind, const QString &text);

    const ListAction &m_actions;
    const ListKey &m_keys;
    const PlannedSettings &m_settings;
    PlanTarget m_target;
    QList<QJsonObject> m_rows;
};

Planner::Planner(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings)
    : m_actions(actions), m_keys(keys), m_settings(settings)
{
    m_target.actions = actions;
    m_target.keys = keys;
    m_target.limit = settings.limit;
    provisioning::mergeDefaults(m_target, settings.actions, settings.keys);
}

QList<QJsonObject> Planner::plan()
{
    for (int place = 0; place < m_actions.size(); ++place)
        planAction(m_actions.at(place), m_target.actions.at(place));
    for (const Action &action : m_target.actions.mid(m_actions.size())) {
        QJsonObject content = fields::toJson(action);
        content.insert(IdAction, QJsonValue());
        add(Added, OfAction, {}, action.dmId,
            {{New, described(action)},
             {Content, content},
             {Reason,
              action.dmId.isEmpty() ? "no identifier: becomes a user's action"_s : QJsonValue()}});
    }
    planKeys();
    planRefusedRecords(OfAction, m_settings.actions);
    planRefusedRecords(OfKey, m_settings.keys);
    return m_rows;
}

void Planner::add(const QString &what, const QString &kind, const QJsonValue &id,
                  const QString &dmId, const QJsonObject &others)
{
    QJsonObject row{{What, what}, {RowKind, kind}, {Id, id}, {DmId, dmId}};
    for (const QString &member : {FieldName, Old, New, RecordNumber, Reason, Content})
        row.insert(member, others.contains(member) ? others.value(member) : QJsonValue());
    m_rows.append(row);
}

void Planner::planAction(const Action &before, const Action &after)
{
    const QJsonValue id = output::jsonNumber(before.idAction);
    const QList<QJsonObject> changes =
        changesBetween<Action>(fields::toJson(before), fields::toJson(after));
    const QString overwritten =
        before.idAction == ReservedActionId ? "the reserved action"_s : "a user's action"_s;
    for (QJsonObject change : changes) {
        if (before.dmId.isEmpty())
            change.insert(Reason, format("no identifier: overwrites %1", overwritten));
        add(Changed, OfAction, id, before.dmId, change);
    }
    if (m_target.withdrawn.contains(before.idAction))
        add(Withdrawn, OfAction, id, before.dmId,
            {{Old, described(before)}, {Reason, withdrawal(before)}});
    else if (changes.isEmpty() && !before.dmId.isEmpty())
        add(Kept, OfAction, id, before.dmId, {{New, described(before)}});
}

QString Planner::withdrawal(const Action &action) const
{
    const auto count = std::count_if(m_keys.cbegin(), m_keys.cend(), [&](const Key &key) {
        return key.dmId.isEmpty() && key.idAction == action.idAction;
    });
    const QString reason = "stays in the database"_s;
    return count == 0 ? reason : format("%1, user keys that trigger it: %2", reason, count);
}

QList<CreatedKey> Planner::createdKeys()
{
    QList<CreatedKey> created;
    auto outcome = m_target.keyOutcomes.cbegin();
    for (const Record &record : recordsOf(m_settings.keys)) {
        if (!record.isAccepted())
            continue;
        const Key key = outcome->key.value_or(provisioning::toKey(record));
        if (outcome->isCreated)
            created.append({key, record.number});
        else
            add(Dropped, OfKey, {}, key.dmId,
                {{New, described(key)},
                 {RecordNumber, record.number},
                 {Reason, outcome->key ? "key limit reached"_s : "no such action"_s}});
        ++outcome;
    }
    return created;
}

// A provisioned key becomes the same key if possible, else one of the same identifier at the same
// place, else one of the same identifier.
void Planner::planKeys()
{
    QList<CreatedKey> created = createdKeys();
    QList<const Key *> removed;
    for (const Key &key : m_keys) {
        if (!key.dmId.isEmpty())
            removed.append(&key);
    }
    pairWhere(created, removed, [](const CreatedKey &after, const Key &before) {
        return changesTo(after, before).isEmpty();
    });
    pairWhere(created, removed, [](const CreatedKey &after, const Key &before) {
        return fields::isSamePlace(after.key, before);
    });
    pairWhere(created, removed, [](const CreatedKey &, const Key &) { return true; });
    for (const CreatedKey &each : std::as_const(created))
        planCreatedKey(each);
    for (const Key *key : std::as_const(removed))
        add(Removed, OfKey, output::jsonNumber(key->idKey), key->dmId, {{Old, described(*key)}});
}

void Planner::planCreatedKey(const CreatedKey &created)
{
    const QString &dmId = created.key.dmId;
    QJsonObject row{{New, described(created.key)}, {RecordNumber, created.record}};
    if (!created.predecessor) {
        row.insert(Content, contentOf(created.key, {}));
        if (dmId.isEmpty())
            row.insert(Reason,
                       "no identifier: becomes a user's key, and each start adds another one"_s);
        add(Added, OfKey, {}, dmId, row);
        return;
    }
    const QJsonValue id = output::jsonNumber(created.predecessor->idKey);
    const QList<QJsonObject> changes = changesTo(created, *created.predecessor);
    for (QJsonObject change : changes) {
        change.insert(RecordNumber, created.record);
        add(Changed, OfKey, id, dmId, change);
    }
    if (changes.isEmpty())
        add(Kept, OfKey, id, dmId, row);
}

void Planner::planRefusedRecords(const QString &kind, const QString &text)
{
    for (const Record &record : recordsOf(text)) {
        if (!record.isAccepted())
            add(Refused, kind, {}, {},
                {{New, text.mid(record.start, record.length)},
                 {RecordNumber, record.number},
                 {Reason, record.fault}});
    }
}

QString quotedValue(const QJsonValue &value)
{
    const QString text = output::displayText(value);
    return value.isString() ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

// What a row says, in one text: the change of a field, or a description; then the reason.
QString detailOf(const QJsonObject &row)
{
    QString detail = row.value(Old).toString() + row.value(New).toString();
    if (row.value(FieldName).isString())
        detail = format("%1 %2 -> %3", row.value(FieldName).toString(), quotedValue(row.value(Old)),
                        quotedValue(row.value(New)));
    QStringList parts{detail, row.value(Reason).toString()};
    parts.removeAll(QString());
    return parts.join(": "_s);
}

// "Actions: 1 added, 2 kept". A changed action or key has a row for each field.
QString summaryOf(const QList<QJsonObject> &rows, const QString &kind, const QString &title)
{
    QStringList parts;
    for (const QString &what : {Added, Changed, Kept, Removed, Withdrawn, Dropped, Refused}) {
        int count = 0;
        QJsonValue last;
        for (const QJsonObject &row : rows) {
            if (row.value(What) != what || row.value(RowKind) != kind)
                continue;
            count += what == Changed && row.value(Id) == last ? 0 : 1;
            last = row.value(Id);
        }
        if (count > 0)
            parts.append(format("%1 %2", count, what));
    }
    return title + (parts.isEmpty() ? "none"_s : parts.join(", "_s));
}

bool hasAny(const QList<QJsonObject> &rows, const QStringList &whats)
{
    return std::any_of(rows.cbegin(), rows.cend(), [&](const QJsonObject &row) {
        return whats.contains(row.value(What).toString());
    });
}

} // namespace

bool Plan::hasChanges() const
{
    return hasAny(rows, {Added, Changed, Removed});
}

bool Plan::hasRefusedRecords() const
{
    return hasAny(rows, {Refused});
}

output::Listing Plan::listing(bool hasAll) const
{
    output::Listing listing;
    for (QJsonObject row : rows) {
        row.insert(Detail, detailOf(row));
        if (hasAll || row.value(What) != Kept)
            listing.rows.append(row);
    }
    listing.legend = summaryOf(rows, OfAction, "Actions: "_s) + QLatin1Char('\n') +
                     summaryOf(rows, OfKey, "Keys: "_s);
    if (!hasChanges())
        listing.legend += "\nNo changes."_s;
    listing.colours = {{Added, "green"}, {Changed, "brown"}, {Withdrawn, "brown"},
                       {Removed, "red"}, {Dropped, "red"},   {Refused, "red"}};
    return listing;
}

Plan planOf(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings)
{
    return {Planner(actions, keys, settings).plan()};
}

} // namespace defaults
