#include "planning/Plan.h"

#include "fields/Fields.h"
#include "planning/PlanTarget.h"
#include "provisioning/ProvisionedRecords.h"
#include "provisioning/ProvisioningText.h"

#include <algorithm>

namespace defaults {
namespace {

using provisioning::Record;

const QString OfAction = QStringLiteral("action");
const QString OfKey = QStringLiteral("key");

const QString Added = QStringLiteral("added");
const QString Changed = QStringLiteral("changed");
const QString Kept = QStringLiteral("kept");
const QString Removed = QStringLiteral("removed");
const QString Withdrawn = QStringLiteral("withdrawn");
const QString Dropped = QStringLiteral("dropped");
const QString Refused = QStringLiteral("refused");

const QString What = QStringLiteral("what");
const QString RowKind = QStringLiteral("kind");
const QString Id = QStringLiteral("id");
const QString DmId = QStringLiteral("dmId");
const QString FieldMember = QStringLiteral("field");
const QString Old = QStringLiteral("old");
const QString New = QStringLiteral("new");
const QString RecordMember = QStringLiteral("record");
const QString Reason = QStringLiteral("reason");
const QString Detail = QStringLiteral("detail");
const QString Content = QStringLiteral("content");

// A key that is created, and the provisioned key that it replaces: all of them are deleted first.
struct CreatedKey
{
    Key key;
    int record = 0;
    bool hasNewAction = false;
    const Key *predecessor = nullptr;
};

// The fields in which two rows differ, each with its old and new value.
template <typename Row>
QList<QJsonObject> changesBetween(const Row &before, const Row &after)
{
    const QJsonObject from = fields::toJson(before);
    const QJsonObject to = fields::toJson(after);
    QList<QJsonObject> changes;
    for (const fields::Field<Row> &field : fields::of<Row>()) {
        const QJsonValue now = from.value(field.name);
        const QJsonValue then = to.value(field.name);
        if (now != then)
            changes.append({{FieldMember, field.name}, {Old, now}, {New, then}});
    }
    return changes;
}

// The id of a new action is not known, but it differs from every present one.
QList<QJsonObject> changesTo(const CreatedKey &created, const Key &before)
{
    Key after = created.key;
    after.idKey = before.idKey;
    if (created.hasNewAction)
        after.idAction = ~before.idAction;
    QList<QJsonObject> changes = changesBetween(before, after);
    for (QJsonObject &change : changes) {
        if (created.hasNewAction && change.value(FieldMember) == QLatin1String("idAction"))
            change.insert(New, QJsonValue());
    }
    return changes;
}

bool isSamePlace(const Key &left, const Key &right)
{
    return left.type == right.type && left.position == right.position &&
           left.container == right.container && left.aom_type == right.aom_type &&
           left.aom_addr == right.aom_addr;
}

QString described(const Action &action)
{
    return action.label.isEmpty() ? action.action : action.label;
}

QString described(const Key &key)
{
    return key.type == KeyType::AddOnModule
               ? QStringLiteral("module %1, key %2").arg(key.aom_addr).arg(key.position)
               : QStringLiteral("%1, position %2")
                     .arg(key.container, QString::number(key.position));
}

// An empty setting provisions nothing; to the parser it is one empty record.
QList<Record> recordsOf(const QString &text)
{
    return text.isEmpty() ? QList<Record>() : provisioning::parseText(text);
}

class Planner
{
public:
    Planner(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings)
        : m_actions(actions), m_keys(keys), m_settings(settings),
          m_target(actions, keys, settings.limit)
    {
        provisioning::mergeDefaults(m_target, settings.actions, settings.keys);
    }

    QList<QJsonObject> plan();

private:
    void add(const QString &what, const QString &kind, const QJsonValue &id, const QString &dmId,
             const QJsonObject &others);
    void planAction(const Action &before, const Action &after);
    void planChangedAction(const Action &before, const QList<QJsonObject> &changes);
    void planWithdrawnAction(const Action &action);
    void planAddedAction(const Action &action);
    void planKeys();
    QList<CreatedKey> createdKeys();
    void planCreatedKey(const CreatedKey &created);
    void planAddedKey(const CreatedKey &created);
    void planRefusedRecords(const QString &kind, const QString &text);

    const ListAction &m_actions;
    const ListKey &m_keys;
    const PlannedSettings &m_settings;
    PlanTarget m_target;
    QList<QJsonObject> m_rows;
};

QList<QJsonObject> Planner::plan()
{
    for (int place = 0; place < m_actions.size(); ++place)
        planAction(m_actions.at(place), m_target.stored().at(place));
    for (const Action &action : m_target.added())
        planAddedAction(action);
    planKeys();
    planRefusedRecords(OfAction, m_settings.actions);
    planRefusedRecords(OfKey, m_settings.keys);
    return m_rows;
}

void Planner::add(const QString &what, const QString &kind, const QJsonValue &id,
                  const QString &dmId, const QJsonObject &others)
{
    QJsonObject row{{What, what}, {RowKind, kind}, {Id, id}, {DmId, dmId}};
    for (const QString &member : {FieldMember, Old, New, RecordMember, Reason, Content})
        row.insert(member, others.contains(member) ? others.value(member) : QJsonValue());
    m_rows.append(row);
}

void Planner::planAction(const Action &before, const Action &after)
{
    const QList<QJsonObject> changes = changesBetween(before, after);
    if (!changes.isEmpty())
        planChangedAction(before, changes);
    else if (m_target.wasModified(before.idAction))
        add(Kept, OfAction, output::jsonNumber(before.idAction), before.dmId,
            {{New, described(before)}});
    else if (m_target.wasToBeDeleted(before.idAction))
        planWithdrawnAction(before);
}

void Planner::planChangedAction(const Action &before, const QList<QJsonObject> &changes)
{
    const bool isReserved = before.idAction == ReservedActionId;
    for (QJsonObject change : changes) {
        if (before.dmId.isEmpty())
            change.insert(Reason, isReserved ? QStringLiteral("no identifier: overwrites the "
                                                              "reserved action")
                                             : QStringLiteral("no identifier: overwrites a user's "
                                                              "action"));
        add(Changed, OfAction, output::jsonNumber(before.idAction), before.dmId, change);
    }
}

void Planner::planWithdrawnAction(const Action &action)
{
    const auto count = std::count_if(m_keys.cbegin(), m_keys.cend(), [&](const Key &key) {
        return key.dmId.isEmpty() && key.idAction == action.idAction;
    });
    QString reason = QStringLiteral("stays in the database");
    if (count > 0)
        reason += QStringLiteral(", user keys that trigger it: %1").arg(count);
    add(Withdrawn, OfAction, output::jsonNumber(action.idAction), action.dmId,
        {{Old, described(action)}, {Reason, reason}});
}

void Planner::planAddedAction(const Action &action)
{
    QJsonObject content = fields::toJson(action);
    content.insert(QStringLiteral("idAction"), QJsonValue());
    QJsonObject row{{New, described(action)}, {Content, content}};
    if (action.dmId.isEmpty())
        row.insert(Reason, QStringLiteral("no identifier: becomes a user's action"));
    add(Added, OfAction, {}, action.dmId, row);
}

// The merge asks for keys in the order of their records, and leaves out those without an action. A
// record with the content of the next request has the same identifier, so it is that request.
QList<CreatedKey> Planner::createdKeys()
{
    QList<CreatedKey> created;
    auto request = m_target.keyRequests().cbegin();
    for (const Record &record : recordsOf(m_settings.keys)) {
        if (!record.isAccepted())
            continue;
        Key key = provisioning::toKey(record);
        bool isRequested = request != m_target.keyRequests().cend();
        if (isRequested) {
            Key requested = request->key;
            requested.idAction = key.idAction;
            isRequested = requested == key;
        }
        if (isRequested && request->isCreated) {
            const bool hasNewAction = m_target.isNew(request->key.idAction);
            key.idAction = hasNewAction ? key.idAction : request->key.idAction;
            created.append({key, record.number, hasNewAction, nullptr});
        } else {
            add(Dropped, OfKey, {}, key.dmId,
                {{New, described(key)},
                 {RecordMember, record.number},
                 {Reason, isRequested ? QStringLiteral("key limit reached")
                                      : QStringLiteral("no such action")}});
        }
        request += isRequested ? 1 : 0;
    }
    return created;
}

// Gives each key that is like a removed one its predecessor, and takes that one off the list.
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
        return isSamePlace(after.key, before);
    });
    pairWhere(created, removed, [](const CreatedKey &, const Key &) { return true; });
    for (const CreatedKey &each : std::as_const(created))
        planCreatedKey(each);
    for (const Key *key : std::as_const(removed))
        add(Removed, OfKey, output::jsonNumber(key->idKey), key->dmId, {{Old, described(*key)}});
}

void Planner::planCreatedKey(const CreatedKey &created)
{
    if (!created.predecessor) {
        planAddedKey(created);
        return;
    }
    const Key &before = *created.predecessor;
    const QList<QJsonObject> changes = changesTo(created, before);
    for (QJsonObject change : changes) {
        change.insert(RecordMember, created.record);
        add(Changed, OfKey, output::jsonNumber(before.idKey), before.dmId, change);
    }
    if (changes.isEmpty())
        add(Kept, OfKey, output::jsonNumber(before.idKey), before.dmId,
            {{New, described(before)}, {RecordMember, created.record}});
}

void Planner::planAddedKey(const CreatedKey &created)
{
    QJsonObject content = fields::toJson(created.key);
    content.insert(QStringLiteral("idKey"), QJsonValue());
    if (created.hasNewAction)
        content.insert(QStringLiteral("idAction"), QJsonValue());
    QJsonObject row{
        {New, described(created.key)}, {RecordMember, created.record}, {Content, content}};
    if (created.key.dmId.isEmpty())
        row.insert(Reason,
                   QStringLiteral("no identifier: becomes a user's key, another at each start"));
    add(Added, OfKey, {}, created.key.dmId, row);
}

void Planner::planRefusedRecords(const QString &kind, const QString &text)
{
    for (const Record &record : recordsOf(text)) {
        if (!record.isAccepted())
            add(Refused, kind, {}, {},
                {{New, text.mid(record.start, record.length)},
                 {RecordMember, record.number},
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
    QStringList parts;
    if (row.value(FieldMember).isString())
        parts.append(QStringLiteral("%1 %2 -> %3")
                         .arg(row.value(FieldMember).toString(), quotedValue(row.value(Old)),
                              quotedValue(row.value(New))));
    else
        parts.append(row.value(Old).toString() + row.value(New).toString());
    parts.append(row.value(Reason).toString());
    parts.removeAll(QString());
    return parts.join(QStringLiteral(": "));
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
            parts.append(QStringLiteral("%1 %2").arg(QString::number(count), what));
    }
    return title + (parts.isEmpty() ? QStringLiteral("none") : parts.join(QStringLiteral(", ")));
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
    for (const QString &name :
         {What, RowKind, Id, DmId, FieldMember, Old, New, RecordMember, Reason, Detail})
        listing.columns.append({name, name.toUpper(), name == Id || name == RecordMember,
                                QStringList{What, RowKind, Id, DmId, Detail}.contains(name)});
    for (QJsonObject row : rows) {
        row.insert(Detail, detailOf(row));
        if (hasAll || row.value(What) != Kept)
            listing.rows.append(row);
    }
    listing.legend = summaryOf(rows, OfAction, QStringLiteral("Actions: ")) + QLatin1Char('\n') +
                     summaryOf(rows, OfKey, QStringLiteral("Keys: "));
    if (!hasChanges())
        listing.legend += QStringLiteral("\nNo changes.");
    listing.colours = {{Added, output::Colour::Green}, {Changed, output::Colour::Yellow},
                       {Removed, output::Colour::Red}, {Withdrawn, output::Colour::Yellow},
                       {Dropped, output::Colour::Red}, {Refused, output::Colour::Red}};
    return listing;
}

Plan planOf(const ListAction &actions, const ListKey &keys, const PlannedSettings &settings)
{
    return {Planner(actions, keys, settings).plan()};
}

} // namespace defaults
