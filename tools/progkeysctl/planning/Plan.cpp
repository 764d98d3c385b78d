#include "planning/Plan.h"

#include "fields/Fields.h"
#include "fields/Places.h"
#include "provisioning/DefaultsMerge.h"
#include "provisioning/ProvisionedRecords.h"
#include "text/Format.h"

#include <QSet>

#include <algorithm>
#include <limits>

namespace defaults {
namespace {

using fields::described;
using provisioning::Record;

// The id of everything new: the id that it will get is not known.
constexpr qlonglong NewId = std::numeric_limits<qlonglong>::min();

// A key in an accepted record, and what becomes of it.
struct PlannedKey
{
    Key key;
    int record = 0;
    QJsonValue reason; ///< why it is not created, or what is unusual about it
    bool isCreated = false;
    std::optional<Key> before; ///< the provisioned key that it replaces: the merge deletes all
};

QJsonValue jsonId(qlonglong id)
{
    return id == NewId ? QJsonValue() : output::jsonNumber(id);
}

template <typename Row>
QJsonObject contentOf(const Row &row)
{
    QJsonObject content = fields::toJson(row);
    for (const QString &id : {"idKey"_s, "idAction"_s}) {
        if (content.value(id) == output::jsonNumber(NewId))
            content.insert(id, QJsonValue());
    }
    return content;
}

// The members of a row that say what it is about.
QJsonObject subject(const Action &action)
{
    return {{"kind"_s, "action"_s}, {"id"_s, jsonId(action.idAction)}, {"dmId"_s, action.dmId}};
}

QJsonObject subject(const Key &key)
{
    return {{"kind"_s, "key"_s}, {"id"_s, jsonId(key.idKey)}, {"dmId"_s, key.dmId}};
}

QString quotedValue(const QJsonValue &value)
{
    const QString text = output::displayText(value);
    return value.isString() ? QLatin1Char('"') + text + QLatin1Char('"') : text;
}

// What a row says, in one text: the change of a field, or a description; then the reason.
QString detailOf(const QJsonObject &row)
{
    QString detail = row.value("old"_s).toString() + row.value("new"_s).toString();
    if (row.value("field"_s).isString())
        detail = format("%1 %2 -> %3", row.value("field"_s).toString(),
                        quotedValue(row.value("old"_s)), quotedValue(row.value("new"_s)));
    QStringList parts{detail, row.value("reason"_s).toString()};
    parts.removeAll(QString());
    return parts.join(": "_s);
}

// The lower, the more alike two keys of the same identifier are.
int difference(const Key &before, Key after)
{
    after.idKey = before.idKey;
    if (after == before)
        return 0;
    return fields::isSamePlace(after, before) ? 1 : 2;
}

// Tries the merge under the rules of the service, and describes its effects as rows.
class Planner : public provisioning::MergeTarget
{
public:
    Planner(const ListAction &actions, const ListKey &keys, const Rollout &rollout);

    Plan plan();

    // The merge calls these.
    bool isLogged() const override { return false; }
    ListAction allActions() override { return m_actions; }
    std::optional<Action> actionWithDmId(const QString &dmId) override;
    void addAction(const Action &action) override;
    void modifyAction(const Action &action) override;
    void deleteAction(qlonglong idAction) override { m_withdrawn.insert(idAction); }
    void deleteProvisionedKeys() override;
    void createKey(const Key &key) override;

private:
    void add(const QString &what, QJsonObject row, const QJsonObject &others);
    template <typename Row>
    void addChanges(const Row &before, const Row &after, QJsonObject others);
    void planAction(const Action &before, const Action &after);
    QString withdrawal(const Action &action) const;
    void findPredecessors();
    void planKey(const PlannedKey &planned);
    void planRefusedRecords(const QString &kind, const Setting &setting);
    QString summaryOf(const QString &kind) const;

    const ListAction &m_actionsBefore;
    const ListKey &m_keysBefore;
    const Setting &m_actionsSetting;
    const Setting &m_keysSetting;
    std::optional<int> m_limit;

    ListAction m_actions; ///< those of the phone, then new ones
    QSet<qlonglong> m_withdrawn;
    ListKey m_removed;        ///< provisioned keys without a successor
    QList<Record> m_accepted; ///< of the keys
    QList<PlannedKey> m_planned;
    int m_keysOfSet = 0;

    Plan m_plan;
};

Planner::Planner(const ListAction &actions, const ListKey &keys, const Rollout &rollout)
    : m_actionsBefore(actions), m_keysBefore(keys),
      m_actionsSetting(rollout.settings.at(Kind::Actions)),
      m_keysSetting(rollout.settings.at(Kind::Keys)), m_limit(rollout.limit()), m_actions(actions)
{
    for (const Record &record : m_keysSetting.records) {
        if (record.isAccepted())
            m_accepted.append(record);
    }
    m_plan.listing.colors = {{"added"_s, "green"}, {"changed"_s, "brown"}, {"withdrawn"_s, "brown"},
                             {"removed"_s, "red"}, {"dropped"_s, "red"},   {"refused"_s, "red"}};
}

void Planner::addAction(const Action &action)
{
    m_actions.append(action);
    m_actions.last().idAction = NewId;
}

void Planner::modifyAction(const Action &action)
{
    for (Action &each : m_actions) {
        if (each.idAction == action.idAction)
            each = action;
    }
}

void Planner::deleteProvisionedKeys()
{
    for (const Key &key : m_keysBefore) {
        if (!key.dmId.isEmpty())
            m_removed.append(key);
        else if (key.type == KeyType::Set)
            ++m_keysOfSet;
    }
}

// The merge asks once for each accepted key, before it creates the key.
std::optional<Action> Planner::actionWithDmId(const QString &dmId)
{
    const Record &record = m_accepted.at(m_planned.size());
    PlannedKey planned;
    planned.key = provisioning::toKey(record);
    planned.key.idKey = NewId;
    planned.record = record.number;
    planned.reason = "no such action"_s;
    m_planned.append(planned);
    const auto found = std::find_if(m_actions.cbegin(), m_actions.cend(),
                                    [&](const Action &action) { return action.dmId == dmId; });
    return found == m_actions.cend() ? std::nullopt : std::optional(*found);
}

void Planner::createKey(const Key &key)
{
    PlannedKey &planned = m_planned.last();
    planned.key.idAction = key.idAction;
    const bool isOfSet = key.type == KeyType::Set;
    planned.isCreated = !isOfSet || !m_limit || m_keysOfSet < *m_limit;
    if (!planned.isCreated)
        planned.reason = "key limit reached"_s;
    else if (key.dmId.isEmpty())
        planned.reason = "no identifier: becomes a user's key, and each start adds another one"_s;
    else
        planned.reason = QJsonValue();
    m_keysOfSet += isOfSet && planned.isCreated ? 1 : 0;
}

Plan Planner::plan()
{
    provisioning::mergeDefaults(*this, m_actionsSetting.text, m_keysSetting.text);
    findPredecessors();
    for (int place = 0; place < m_actionsBefore.size(); ++place)
        planAction(m_actionsBefore.at(place), m_actions.at(place));
    for (const Action &action : m_actions.mid(m_actionsBefore.size()))
        add("added"_s, subject(action),
            {{"new"_s, described(action)},
             {"content"_s, contentOf(action)},
             {"reason"_s,
              action.dmId.isEmpty() ? "no identifier: becomes a user's action"_s : QJsonValue()}});
    for (const PlannedKey &planned : std::as_const(m_planned))
        planKey(planned);
    for (const Key &key : std::as_const(m_removed))
        add("removed"_s, subject(key), {{"old"_s, described(key)}});
    planRefusedRecords("action"_s, m_actionsSetting);
    planRefusedRecords("key"_s, m_keysSetting);
    m_plan.listing.legend = format("Actions: %1\nKeys: %2%3", summaryOf("action"_s),
                                   summaryOf("key"_s), m_plan.hasChanges ? "" : "\nNo changes.");
    return m_plan;
}

void Planner::add(const QString &what, QJsonObject row, const QJsonObject &others)
{
    row.insert("what"_s, what);
    for (const char *member : {"field", "old", "new", "record", "reason", "content"})
        row.insert(QString::fromLatin1(member), QJsonValue());
    for (auto other = others.begin(); other != others.end(); ++other)
        row.insert(other.key(), other.value());
    row.insert("detail"_s, detailOf(row));
    m_plan.listing.rows.append(row);
    m_plan.hasChanges |= what == "added"_s || what == "changed"_s || what == "removed"_s;
    m_plan.hasRefusedRecords |= what == "refused"_s;
}

// Adds a row for each field that differs.
template <typename Row>
void Planner::addChanges(const Row &before, const Row &after, QJsonObject others)
{
    const QJsonObject old = contentOf(before);
    const QJsonObject content = contentOf(after);
    for (const fields::Field &field : fields::of<Row>()) {
        if (old.value(field.name) == content.value(field.name))
            continue;
        others.insert("field"_s, field.name);
        others.insert("old"_s, old.value(field.name));
        others.insert("new"_s, content.value(field.name));
        add("changed"_s, subject(before), others);
    }
}

void Planner::planAction(const Action &before, const Action &after)
{
    if (m_withdrawn.contains(before.idAction)) {
        add("withdrawn"_s, subject(before),
            {{"old"_s, described(before)}, {"reason"_s, withdrawal(before)}});
    } else if (!before.dmId.isEmpty() && before == after) {
        add("kept"_s, subject(before), {{"new"_s, described(before)}});
    } else if (!before.dmId.isEmpty()) {
        addChanges(before, after, {});
    } else {
        const char *whose =
            before.idAction == ReservedActionId ? "the reserved action" : "a user's action";
        addChanges(before, after, {{"reason"_s, format("no identifier: overwrites %1", whose)}});
    }
}

QString Planner::withdrawal(const Action &action) const
{
    const auto count =
        std::count_if(m_keysBefore.cbegin(), m_keysBefore.cend(), [&](const Key &key) {
            return key.dmId.isEmpty() && key.idAction == action.idAction;
        });
    const QString reason = "stays in the database"_s;
    return count == 0 ? reason : format("%1, user keys that trigger it: %2", reason, count);
}

// A provisioned key becomes the same key if possible, else one of the same identifier at the same
// place, else one of the same identifier.
void Planner::findPredecessors()
{
    for (const int limit : {0, 1, 2}) {
        for (PlannedKey &planned : m_planned) {
            if (!planned.isCreated || planned.before)
                continue;
            const auto found =
                std::find_if(m_removed.begin(), m_removed.end(), [&](const Key &key) {
                    return key.dmId == planned.key.dmId && difference(key, planned.key) <= limit;
                });
            if (found == m_removed.end())
                continue;
            planned.before = *found;
            planned.key.idKey = found->idKey;
            m_removed.erase(found);
        }
    }
}

void Planner::planKey(const PlannedKey &planned)
{
    const Key &key = planned.key;
    QJsonObject row{
        {"new"_s, described(key)}, {"record"_s, planned.record}, {"reason"_s, planned.reason}};
    if (!planned.isCreated) {
        add("dropped"_s, subject(key), row);
    } else if (!planned.before) {
        row.insert("content"_s, contentOf(key));
        add("added"_s, subject(key), row);
    } else if (key == *planned.before) {
        add("kept"_s, subject(key), row);
    } else {
        addChanges(*planned.before, key, {{"record"_s, planned.record}});
    }
}

void Planner::planRefusedRecords(const QString &kind, const Setting &setting)
{
    for (const Record &record : setting.records) {
        if (!record.isAccepted())
            add("refused"_s, {{"kind"_s, kind}, {"id"_s, {}}, {"dmId"_s, QString()}},
                {{"new"_s, setting.text.mid(record.start, record.length)},
                 {"record"_s, record.number},
                 {"reason"_s, record.fault}});
    }
}

// "1 added, 2 kept". A changed action or key has a row for each field.
QString Planner::summaryOf(const QString &kind) const
{
    QMap<QString, int> counts;
    QJsonValue last;
    for (const QJsonObject &row : m_plan.listing.rows) {
        if (row.value("kind"_s) != kind)
            continue;
        const bool isCounted = row.value("field"_s).isString() && row.value("id"_s) == last;
        counts[row.value("what"_s).toString()] += isCounted ? 0 : 1;
        last = row.value("id"_s);
    }
    QStringList parts;
    for (auto count = counts.begin(); count != counts.end(); ++count)
        parts.append(format("%1 %2", count.value(), count.key()));
    return parts.isEmpty() ? "none"_s : parts.join(", "_s);
}

} // namespace

Plan planOf(const ListAction &actions, const ListKey &keys, const Rollout &rollout)
{
    return Planner(actions, keys, rollout).plan();
}

} // namespace defaults
