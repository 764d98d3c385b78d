#include "exchange/Document.h"

#include "fields/Fields.h"
#include "outcome/Failure.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>

namespace exchange {
namespace {

constexpr int Version = 1;
const QString SchemaName = QStringLiteral("com.velmora.Tessaro.ProgrammableKeys.Export");

const QString SchemaMember = QStringLiteral("schema");
const QString VersionMember = QStringLiteral("version");
const QString ActionsMember = QStringLiteral("actions");
const QString KeysMember = QStringLiteral("keys");
const QString ActionDmIdMember = QStringLiteral("actionDmId");
const QString IdActionMember = QStringLiteral("idAction");
const QString DmIdMember = QStringLiteral("dmId");

[[noreturn]] void throwInvalid(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, message, advice};
}

QJsonObject keyToJson(const ExportedKey &exported)
{
    QJsonObject object = fields::toJson(exported.key);
    object.remove(DmIdMember);
    if (!exported.actionDmId.isEmpty()) {
        object.remove(IdActionMember);
        object.insert(ActionDmIdMember, exported.actionDmId);
    }
    return object;
}

QJsonObject actionToJson(const Action &action)
{
    QJsonObject object = fields::toJson(action);
    object.remove(DmIdMember);
    return object;
}

void require(const QJsonObject &object, const char *member, const QString &where)
{
    if (!object.contains(QLatin1String(member)))
        throwInvalid(
            QStringLiteral("%1: the field %2 is missing").arg(where, QString::fromLatin1(member)));
}

void refuseProvisioned(const QString &dmId, const QString &where)
{
    if (!dmId.isEmpty())
        throwInvalid(QStringLiteral("%1: its dmId says that it is provisioned").arg(where),
                     QStringLiteral("Only what users made can be imported; what is provisioned "
                                    "comes from device management."));
}

Action actionFromJson(const QJsonObject &object, const QString &where)
{
    Action action;
    fields::setFromJson(action, object, where);
    require(object, "idAction", where);
    require(object, "type", where);
    require(object, "action", where);
    refuseProvisioned(action.dmId, where);
    return action;
}

ExportedKey keyFromJson(QJsonObject object, const QString &where)
{
    ExportedKey exported;
    const QJsonValue actionDmId = object.take(ActionDmIdMember);
    if (!actionDmId.isUndefined() && actionDmId.toString().isEmpty())
        throwInvalid(QStringLiteral("%1: actionDmId is no identifier").arg(where));
    exported.actionDmId = actionDmId.toString();
    if (exported.actionDmId.isEmpty() != object.contains(IdActionMember))
        throwInvalid(QStringLiteral("%1: either idAction or actionDmId says what it triggers, and "
                                    "not both")
                         .arg(where));
    fields::setFromJson(exported.key, object, where);
    require(object, "type", where);
    require(object, "position", where);
    refuseProvisioned(exported.key.dmId, where);
    return exported;
}

QList<QJsonObject> objectsOf(const QJsonObject &document, const QString &member,
                             const QString &name)
{
    const QJsonValue list = document.value(member);
    if (!list.isArray())
        throwInvalid(QStringLiteral("%1: \"%2\" is no list").arg(name, member));
    QList<QJsonObject> objects;
    const QJsonArray array = list.toArray();
    for (const QJsonValue &value : array) {
        if (!value.isObject())
            throwInvalid(
                QStringLiteral("%1: \"%2\" has an element that is no object").arg(name, member));
        objects.append(value.toObject());
    }
    return objects;
}

QJsonObject parsed(const QByteArray &text, const QString &name)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        throwInvalid(QStringLiteral("%1 is no JSON: %2 at byte %3")
                         .arg(name, error.errorString(), QString::number(error.offset)));
    return document.object();
}

void checkHead(const QJsonObject &object, const QString &name)
{
    if (object.value(SchemaMember) != SchemaName)
        throwInvalid(QStringLiteral("%1 is no export of programmable keys: its schema is not %2")
                         .arg(name, SchemaName),
                     QStringLiteral("\"progkeysctl export\" makes one."));
    if (object.value(VersionMember) != Version)
        throwInvalid(
            QStringLiteral("%1 is of another version than %2").arg(name, QString::number(Version)),
            QStringLiteral("A newer progkeysctl may know it."));
    const QStringList known = {SchemaMember, VersionMember, ActionsMember, KeysMember};
    const QStringList members = object.keys();
    for (const QString &member : members)
        if (!known.contains(member))
            throwInvalid(QStringLiteral("%1: there is no \"%2\" in an export").arg(name, member));
}

QString placeOf(const QString &name, const QString &member, qsizetype index)
{
    return QStringLiteral("%1: %2[%3]").arg(name, member, QString::number(index));
}

[[noreturn]] void throwTwice(const QString &where, qlonglong id)
{
    throwInvalid(QStringLiteral("%1: the id %2 stands twice").arg(where, QString::number(id)));
}

ListAction actionsOf(const QJsonObject &object, const QString &name)
{
    ListAction actions;
    QSet<qlonglong> ids;
    const QList<QJsonObject> objects = objectsOf(object, ActionsMember, name);
    for (const QJsonObject &each : objects) {
        const QString where = placeOf(name, ActionsMember, actions.size());
        const Action action = actionFromJson(each, where);
        if (action.idAction == ReservedActionId)
            throwInvalid(QStringLiteral("%1: -1 is the reserved action").arg(where),
                         QStringLiteral("Leave it out; keys may name it all the same."));
        if (ids.contains(action.idAction))
            throwTwice(where, action.idAction);
        ids.insert(action.idAction);
        actions.append(action);
    }
    return actions;
}

QList<ExportedKey> keysOf(const QJsonObject &object, const QString &name)
{
    QList<ExportedKey> keys;
    QSet<qlonglong> ids;
    const QList<QJsonObject> objects = objectsOf(object, KeysMember, name);
    for (const QJsonObject &each : objects) {
        const QString where = placeOf(name, KeysMember, keys.size());
        keys.append(keyFromJson(each, where));
        const qlonglong id = keys.last().key.idKey;
        if (id != Key().idKey && ids.contains(id))
            throwTwice(where, id);
        ids.insert(id);
    }
    return keys;
}

} // namespace

QByteArray toJson(const Document &document, bool isPretty)
{
    QJsonArray actions;
    for (const Action &action : document.actions)
        actions.append(actionToJson(action));
    QJsonArray keys;
    for (const ExportedKey &key : document.keys)
        keys.append(keyToJson(key));
    const QJsonObject object{{SchemaMember, SchemaName},
                             {VersionMember, Version},
                             {ActionsMember, actions},
                             {KeysMember, keys}};
    const QByteArray text =
        QJsonDocument(object).toJson(isPretty ? QJsonDocument::Indented : QJsonDocument::Compact);
    return isPretty ? text : text + '\n';
}

Document fromJson(const QByteArray &text, const QString &name)
{
    const QJsonObject object = parsed(text, name);
    checkHead(object, name);
    Document document;
    document.actions = actionsOf(object, name);
    document.keys = keysOf(object, name);
    return document;
}

} // namespace exchange
