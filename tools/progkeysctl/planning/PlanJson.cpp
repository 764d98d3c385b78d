#include "planning/PlanJson.h"

#include "fields/Fields.h"
#include "planning/PlanFiles.h"

#include <QJsonArray>

namespace defaults {
namespace {

const QString IdKey = QStringLiteral("idKey");
const QString IdAction = QStringLiteral("idAction");

template <typename Rows, typename Convert>
QJsonArray arrayOf(const Rows &rows, Convert convert)
{
    QJsonArray array;
    for (const auto &row : rows)
        array.append(convert(row));
    return array;
}

QJsonObject changeJson(const FieldChange &change)
{
    return {{QStringLiteral("field"), change.field},
            {QStringLiteral("old"), change.before},
            {QStringLiteral("new"), change.after}};
}

QJsonObject addedJson(const Action &action)
{
    QJsonObject object = fields::toJson(action);
    object.insert(IdAction, QJsonValue());
    return object;
}

QJsonObject changedJson(const ChangedAction &changed)
{
    return {{IdAction, changed.action.idAction},
            {QStringLiteral("dmId"), changed.action.dmId},
            {QStringLiteral("changes"), arrayOf(changed.changes, changeJson)}};
}

QJsonObject leftJson(const LeftAction &left)
{
    QJsonObject object = fields::toJson(left.action);
    object.insert(QStringLiteral("keysRemoved"), left.removedKeys);
    object.insert(QStringLiteral("keysMade"), left.madeKeys);
    object.insert(QStringLiteral("userKeys"), left.userKeys);
    return object;
}

QJsonObject newKeyJson(const Key &key, bool hasAction)
{
    QJsonObject object = fields::toJson(key);
    object.insert(IdKey, QJsonValue());
    if (!hasAction)
        object.insert(IdAction, QJsonValue());
    return object;
}

QString comparison(const MadeKey &made)
{
    if (!made.predecessor)
        return QStringLiteral("new");
    return made.changes.isEmpty() ? QStringLiteral("same") : QStringLiteral("changed");
}

QJsonObject madeJson(const MadeKey &made)
{
    QJsonObject object = newKeyJson(made.key, !made.hasNewAction);
    object.insert(QStringLiteral("record"), made.record);
    object.insert(QStringLiteral("comparison"), comparison(made));
    object.insert(QStringLiteral("replaces"),
                  made.predecessor ? QJsonValue(made.predecessor->idKey) : QJsonValue());
    object.insert(QStringLiteral("changes"), arrayOf(made.changes, changeJson));
    return object;
}

QJsonObject removedJson(const RemovedKey &removed, const Plan &plan)
{
    QJsonObject object = fields::toJson(removed.key);
    object.insert(QStringLiteral("becomes"), removed.successor
                                                 ? comparison(plan.made.at(*removed.successor))
                                                 : QStringLiteral("gone"));
    return object;
}

QJsonObject droppedJson(const DroppedKey &dropped)
{
    QJsonObject object{
        {QStringLiteral("key"), newKeyJson(dropped.key, false)},
        {QStringLiteral("record"), dropped.record},
        {QStringLiteral("reason"),
         dropped.setKeys ? QStringLiteral("limit") : QStringLiteral("no action")},
    };
    object.insert(QStringLiteral("setKeys"),
                  dropped.setKeys ? QJsonValue(*dropped.setKeys) : QJsonValue());
    return object;
}

QJsonObject refusedJson(const RefusedRecord &refused)
{
    return {
        {QStringLiteral("setting"), refused.kind == Kind::Actions ? ActionsSetting : KeysSetting},
        {QStringLiteral("record"), refused.record},
        {QStringLiteral("fault"), refused.fault},
        {QStringLiteral("text"), refused.text}};
}

QJsonObject warningJson(const PlanWarning &warning)
{
    return {{QStringLiteral("code"), warning.code}, {QStringLiteral("message"), warning.message}};
}

QJsonObject actionsJson(const Plan &plan)
{
    return {
        {QStringLiteral("added"), arrayOf(plan.added, addedJson)},
        {QStringLiteral("changed"), arrayOf(plan.changed, changedJson)},
        {QStringLiteral("kept"), arrayOf(plan.kept, fields::toJson<Action>)},
        {QStringLiteral("left"), arrayOf(plan.left, leftJson)},
    };
}

QJsonObject keysJson(const Plan &plan)
{
    const auto toRemoved = [&plan](const RemovedKey &removed) {
        return removedJson(removed, plan);
    };
    return {
        {QStringLiteral("made"), arrayOf(plan.made, madeJson)},
        {QStringLiteral("removed"), arrayOf(plan.removed, toRemoved)},
        {QStringLiteral("dropped"), arrayOf(plan.dropped, droppedJson)},
    };
}

} // namespace

QList<output::Column> planColumns()
{
    QList<output::Column> columns;
    for (const char *name :
         {"actions", "keys", "refusedRecords", "limit", "warnings", "hasChanges"})
        columns.append({QString::fromLatin1(name), QString::fromLatin1(name)});
    return columns;
}

QJsonObject toJson(const Plan &plan, const QList<PlanWarning> &warnings)
{
    return {
        {QStringLiteral("actions"), actionsJson(plan)},
        {QStringLiteral("keys"), keysJson(plan)},
        {QStringLiteral("refusedRecords"), arrayOf(plan.refused, refusedJson)},
        {QStringLiteral("limit"), plan.limit ? QJsonValue(*plan.limit) : QJsonValue()},
        {QStringLiteral("warnings"), arrayOf(warnings, warningJson)},
        {QStringLiteral("hasChanges"), plan.hasChanges()},
    };
}

} // namespace defaults
