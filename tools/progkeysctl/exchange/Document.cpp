#include "exchange/Document.h"

#include "fields/Fields.h"
#include "files/Json.h"
#include "outcome/Failure.h"
#include "text/Format.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace exchange {
namespace {

const QString ActionsMember = "actions"_s;
const QString KeysMember = "keys"_s;
const QString ActionDmIdMember = "actionDmId"_s;
const QString IdActionMember = "idAction"_s;
const QString DmIdMember = "dmId"_s;

const files::Schema Schema{
    "com.velmora.Tessaro.ProgrammableKeys.Export"_s, 1, {ActionsMember, KeysMember}};

[[noreturn]] void throwInvalid(const QString &where, const QString &message,
                               const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, format("%1: %2", where, message), advice};
}

template <typename Row>
QJsonObject withoutDmId(const Row &row)
{
    QJsonObject object = fields::toJson(row);
    object.remove(DmIdMember);
    return object;
}

QJsonObject keyToJson(const ExportedKey &exported)
{
    QJsonObject object = withoutDmId(exported.key);
    if (!exported.actionDmId.isEmpty()) {
        object.remove(IdActionMember);
        object.insert(ActionDmIdMember, exported.actionDmId);
    }
    return object;
}

// Sets the fields of a row that a user made; the required ones must be there.
template <typename Row>
Row rowFromJson(const QJsonObject &object, const QStringList &required, const QString &where)
{
    Row row;
    fields::setFromJson(row, object, where);
    for (const QString &field : required) {
        if (!object.contains(field))
            throwInvalid(where, format("the field %1 is missing", field));
    }
    if (!row.dmId.isEmpty())
        throwInvalid(
            where, "the dmId is not empty"_s,
            "Only rows that users created can be imported. Provisioned rows come from device "
            "management."_s);
    return row;
}

Action actionFromJson(const QJsonObject &object, const QString &where)
{
    Action action = rowFromJson<Action>(object, {IdActionMember, "type"_s, "action"_s}, where);
    if (action.idAction == ReservedActionId)
        throwInvalid(where, "the idAction -1 is reserved"_s,
                     "Remove this action. Keys can still refer to it."_s);
    return action;
}

ExportedKey keyFromJson(QJsonObject object, const QString &where)
{
    ExportedKey exported;
    const bool hasDmId = object.contains(ActionDmIdMember);
    exported.actionDmId = object.take(ActionDmIdMember).toString();
    if (hasDmId && exported.actionDmId.isEmpty())
        throwInvalid(where, "actionDmId must be a non-empty string"_s);
    if (hasDmId == object.contains(IdActionMember))
        throwInvalid(where, "exactly one of idAction and actionDmId is required"_s);
    exported.key = rowFromJson<Key>(object, {"type"_s, "position"_s}, where);
    return exported;
}

} // namespace

QByteArray toJson(const Document &document, bool isPretty)
{
    QJsonArray actions;
    for (const Action &action : document.actions)
        actions.append(withoutDmId(action));
    QJsonArray keys;
    for (const ExportedKey &key : document.keys)
        keys.append(keyToJson(key));
    const QJsonObject object{{"schema"_s, Schema.name},
                             {"version"_s, Schema.version},
                             {ActionsMember, actions},
                             {KeysMember, keys}};
    const QByteArray text =
        QJsonDocument(object).toJson(isPretty ? QJsonDocument::Indented : QJsonDocument::Compact);
    return isPretty ? text : text + '\n';
}

Document fromJson(const QByteArray &text, const QString &file)
{
    const QJsonObject object = files::readJson(text, file, Schema);
    const auto positionIn = [&](const QString &member, qsizetype index) {
        return format("%1: %2[%3]", file, member, index);
    };
    Document document;
    QSet<qlonglong> ids{ReservedActionId};
    for (const QJsonObject &each : files::objectsOf(object, ActionsMember, file)) {
        const QString where = positionIn(ActionsMember, document.actions.size());
        const Action action = actionFromJson(each, where);
        if (ids.contains(action.idAction))
            throwInvalid(where, format("the id %1 is used twice", action.idAction));
        ids.insert(action.idAction);
        document.actions.append(action);
    }
    for (const QJsonObject &each : files::objectsOf(object, KeysMember, file)) {
        const QString where = positionIn(KeysMember, document.keys.size());
        const ExportedKey exported = keyFromJson(each, where);
        if (!ids.contains(exported.key.idAction))
            throwInvalid(where,
                         format("the file does not contain action %1", exported.key.idAction));
        document.keys.append(exported);
    }
    return document;
}

} // namespace exchange
