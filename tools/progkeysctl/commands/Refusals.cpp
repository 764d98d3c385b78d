#include "commands/Refusals.h"

namespace commands {
namespace {

constexpr qlonglong LimitReached = -1;
constexpr qlonglong Refused = -2;
constexpr int ModuleWithDisplays = 1;

QString number(qlonglong value)
{
    return QString::number(value);
}

Failure notStored(const QString &what, qlonglong code)
{
    return {ExitStatus::Failed,
            QStringLiteral("%1: the database could not be written (%2)").arg(what, number(code)),
            QStringLiteral("See the log of the service. Check the free space and the permissions "
                           "of its data directory.")};
}

Failure missingAction(const QString &what, qlonglong idAction)
{
    return {ExitStatus::NotFound,
            QStringLiteral("%1: there is no action %2 (-2)").arg(what, number(idAction)),
            QStringLiteral("\"progkeysctl action list\" lists the actions; \"progkeysctl action "
                           "add\" adds one.")};
}

Failure provisioned(const QString &what, const QString &dmId, const QString &advice)
{
    return {ExitStatus::Failed,
            QStringLiteral("%1: it is provisioned, with the dmId \"%2\" (-2)").arg(what, dmId),
            advice};
}

} // namespace

Failure noSuchKey(qlonglong idKey)
{
    return {ExitStatus::NotFound, QStringLiteral("There is no key %1").arg(idKey),
            QStringLiteral("\"progkeysctl key list\" lists the keys.")};
}

Failure noSuchAction(qlonglong idAction)
{
    return {ExitStatus::NotFound, QStringLiteral("There is no action %1").arg(idAction),
            QStringLiteral("\"progkeysctl action list\" lists the actions.")};
}

Key keyOf(client::ProgrammableKeys &service, qlonglong idKey)
{
    const std::optional<Key> key = service.key(idKey);
    if (!key)
        throw noSuchKey(idKey);
    return *key;
}

Action actionOf(client::ProgrammableKeys &service, qlonglong idAction)
{
    const std::optional<Action> action = service.action(idAction);
    if (!action)
        throw noSuchAction(idAction);
    return *action;
}

Failure creationRefused(client::ProgrammableKeys &service, const Key &key, qlonglong code)
{
    const QString what = QStringLiteral("The key was not created");
    if (code == LimitReached)
        return {ExitStatus::Failed, QStringLiteral("%1: the key limit is reached (-1)").arg(what),
                QStringLiteral("Delete a key of type 0, or raise the setting ProgKeysMax. "
                               "\"progkeysctl status\" shows both numbers.")};
    if (code == Refused && !service.action(key.idAction))
        return missingAction(what, key.idAction);
    return notStored(what, code);
}

Failure keyChangeRefused(client::ProgrammableKeys &service, const Key &key, qlonglong code)
{
    const QString what = QStringLiteral("Key %1 was not changed").arg(key.idKey);
    if (code == Refused && !service.action(key.idAction))
        return missingAction(what, key.idAction);
    if (code == Refused && !service.key(key.idKey))
        return noSuchKey(key.idKey);
    return notStored(what, code);
}

Failure keyDeletionRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code)
{
    const QString what = QStringLiteral("Key %1 cannot be deleted").arg(idKey);
    const std::optional<Key> key = service.key(idKey);
    if (!key)
        return noSuchKey(idKey);
    if (code == Refused && !key->dmId.isEmpty())
        return provisioned(what, key->dmId,
                           QStringLiteral("Remove it from the setting DefaultKeys: then the next "
                                          "start of the service deletes it."));
    return notStored(QStringLiteral("Key %1 was not deleted").arg(idKey), code);
}

Failure additionRefused(qlonglong code)
{
    return notStored(QStringLiteral("The action was not created"), code);
}

Failure actionChangeRefused(client::ProgrammableKeys &service, qlonglong idAction, qlonglong code)
{
    if (code == Refused && !service.action(idAction))
        return noSuchAction(idAction);
    return notStored(QStringLiteral("Action %1 was not changed").arg(idAction), code);
}

Failure actionDeletionRefused(client::ProgrammableKeys &service, qlonglong idAction, qlonglong code)
{
    const QString what = QStringLiteral("Action %1 cannot be deleted").arg(idAction);
    if (idAction == ReservedActionId)
        return {ExitStatus::Failed, QStringLiteral("%1: it is the reserved action (-2)").arg(what),
                QStringLiteral("It can be changed, but not deleted.")};
    const std::optional<Action> action = service.action(idAction);
    if (!action)
        return noSuchAction(idAction);
    if (code == Refused && !action->dmId.isEmpty())
        return provisioned(what, action->dmId,
                           QStringLiteral("It stays even if it is removed from the setting "
                                          "DefaultActions; after that, \"progkeysctl restore\" "
                                          "deletes it."));
    return notStored(QStringLiteral("Action %1 was not deleted").arg(idAction), code);
}

Failure displayRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code)
{
    const Key key = keyOf(service, idKey);
    if (key.type != KeyType::AddOnModule)
        return {ExitStatus::Failed,
                QStringLiteral("Key %1 is not on an add-on module: its type is %2, not 1 (%3)")
                    .arg(number(idKey), number(key.type), number(code)),
                QStringLiteral("\"progkeysctl key list --type 1\" lists the keys on add-on "
                               "modules.")};
    if (key.aom_type != ModuleWithDisplays)
        return {ExitStatus::Failed,
                QStringLiteral("Key %1 is on an add-on module without displays: its aom_type is "
                               "%2, not 1 (%3)")
                    .arg(number(idKey), number(key.aom_type), number(code)),
                QStringLiteral("If the module has displays, run \"progkeysctl key set %1 "
                               "aom_type=1\".")
                    .arg(idKey)};
    if (!service.action(key.idAction))
        return missingAction(QStringLiteral("Key %1 has no label").arg(idKey), key.idAction);
    return {ExitStatus::Failed, QStringLiteral("The service refused the request (%1)").arg(code),
            QStringLiteral("See the log of the service.")};
}

} // namespace commands
