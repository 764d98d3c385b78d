#include "exchange/Document.h"

#include "fields/Fields.h"
#include "files/Json.h"
#include "outcome/Failure.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace exchange {
namespace {

const QString ActionsMember = QStringLiteral("actions");
const QString KeysMember = QStringLiteral("keys");
const QString ActionDmIdMember = QStringLiteral("actionDmId");
const QString IdActionMember = QStringLiteral("idAction");
const QString DmIdMember = QStringLiteral("dmId");

const files::Schema Schema{
    QStringLiteral("com.velmora.Tessaro.ProgrammableKeys.Export"), 1, {ActionsMember, KeysMember}};

[[noreturn]] void throwInvalid(const QString &where, const QString &message,
                               const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, QStringLiteral("%1: %2").arg(where, message), advice};
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
            throwInvalid(where, QStringLiteral("the field %1 is missing").arg(field));
    }
    if (!row.dmId.isEmpty())
        throwInvalid(
            where, QStringLiteral("the dmId is not empty"),
            QStringLiteral("Only rows that users created can be imported. Provisioned rows "
                           "come from device management."));
    return row;
}

Action actionFromJson(const QJsonObject &object, const QString &where)
{
    Action action = rowFromJson<Action>(
        object, {IdActionMember, QStringLiteral("type"), QStringLiteral("action")}, where);
    if (action.idAction == ReservedActionId)
        throwInvalid(where, QStringLiteral("the idAction -1 is reserved"),
                     QStringLiteral("Remove this action. Keys can still refer to it."));
    return action;
}

ExportedKey keyFromJson(QJsonObject object, const QString &where)
{
    ExportedKey exported;
    const bool hasDmId = object.contains(ActionDmIdMember);
    exported.actionDmId = object.take(ActionDmIdMember).toString();
    if (hasDmId && exported.actionDmId.isEmpty())
        throwInvalid(where, QStringLiteral("actionDmId must be a non-empty string"));
    if (hasDmId == object.contains(IdActionMember))
        throwInvalid(where, QStringLiteral("exactly one of idAction and actionDmId is required"));
    exported.key =
        rowFromJson<Key>(object, {QStringLiteral("type"), QStringLiteral("position")}, where);
    return exported;
}

// Calls `add` for each object of an array, with a description of its place.
template <typename Add>
void forEachObject(const QJsonObject &document, const QString &member, const QString &file, Add add)
{
    const QJsonValue list = document.value(member);
    if (!list.isArray())
        throwInvalid(file, QStringLiteral("\"%1\" is not an array").arg(member));
    const QJsonArray array = list.toArray();
    for (int index = 0; index < array.size(); ++index) {
        const QString where =
            QStringLiteral("%1: %2[%3]").arg(file, member, QString::number(index));
        if (!array.at(index).isObject())
            throwInvalid(where, QStringLiteral("not an object"));
        add(array.at(index).toObject(), where);
    }
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
    const QJsonObject object{{QStringLiteral("schema"), Schema.name},
                             {QStringLiteral("version"), Schema.version},
                             {ActionsMember, actions},
                             {KeysMember, keys}};
    const QByteArray text =
        QJsonDocument(object).toJson(isPretty ? QJsonDocument::Indented : QJsonDocument::Compact);
    return isPretty ? text : text + '\n';
}

Document fromJson(const QByteArray &text, const QString &file)
{
    const QJsonObject object = files::readJson(text, file, Schema);
    Document document;
    QSet<qlonglong> ids{ReservedActionId};
    forEachObject(object, ActionsMember, file, [&](const QJsonObject &each, const QString &where) {
        const Action action = actionFromJson(each, where);
        if (ids.contains(action.idAction))
            throwInvalid(where, QStringLiteral("the id %1 is used twice").arg(action.idAction));
        ids.insert(action.idAction);
        document.actions.append(action);
    });
    forEachObject(object, KeysMember, file, [&](const QJsonObject &each, const QString &where) {
        const ExportedKey exported = keyFromJson(each, where);
        if (!ids.contains(exported.key.idAction))
            throwInvalid(
                where,
                QStringLiteral("the file does not contain action %1").arg(exported.key.idAction));
        document.keys.append(exported);
    });
    return document;
}

} // namespace exchange
