#include "commands/Refusals.h"

namespace commands {
namespace {

constexpr qlonglong LimitReached = -1;
constexpr qlonglong Refused = -2;
constexpr int ModuleOfDisplays = 1;

QString number(qlonglong value)
{
    return QString::number(value);
}

Failure notStored(const QString &what, qlonglong code)
{
    return {ExitStatus::Failed,
            QStringLiteral("%1: the database could not be written (%2)").arg(what, number(code)),
            QStringLiteral("The service's log names the statement and the reason; look at the room "
                           "and the rights where its data is.")};
}

Failure missingAction(const QString &what, qlonglong idAction)
{
    return {ExitStatus::NotFound,
            QStringLiteral("%1: there is no action %2 (-2)").arg(what, number(idAction)),
            QStringLiteral("\"progkeysctl action list\" shows those there are; \"progkeysctl "
                           "action add\" makes one.")};
}

Failure provisioned(const QString &what, const QString &dmId)
{
    return {ExitStatus::Failed,
            QStringLiteral("%1: device management provisioned it, as \"%2\" (-2)").arg(what, dmId),
            QStringLiteral("Only device management takes it away; \"progkeysctl defaults plan\" "
                           "shows what a rollout does.")};
}

} // namespace

Failure noSuchKey(qlonglong idKey)
{
    return {ExitStatus::NotFound, QStringLiteral("There is no key %1").arg(idKey),
            QStringLiteral("\"progkeysctl key list\" shows those there are.")};
}

Failure noSuchAction(qlonglong idAction)
{
    return {ExitStatus::NotFound, QStringLiteral("There is no action %1").arg(idAction),
            QStringLiteral("\"progkeysctl action list\" shows those there are.")};
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
    const QString what = QStringLiteral("The key was not made");
    if (code == LimitReached)
        return {ExitStatus::Failed,
                QStringLiteral("%1: the set has as many keys as ProgKeysMax allows (-1)").arg(what),
                QStringLiteral("Delete a key of type 0, or have the setting ProgKeysMax raised; "
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
    const QString what = QStringLiteral("Key %1 was not deleted").arg(idKey);
    const std::optional<Key> key = service.key(idKey);
    if (!key)
        return noSuchKey(idKey);
    if (code == Refused && !key->dmId.isEmpty())
        return provisioned(what, key->dmId);
    return notStored(what, code);
}

Failure additionRefused(qlonglong code)
{
    return notStored(QStringLiteral("The action was not added"), code);
}

Failure actionChangeRefused(client::ProgrammableKeys &service, qlonglong idAction, qlonglong code)
{
    if (code == Refused && !service.action(idAction))
        return noSuchAction(idAction);
    return notStored(QStringLiteral("Action %1 was not changed").arg(idAction), code);
}

Failure actionDeletionRefused(client::ProgrammableKeys &service, qlonglong idAction, qlonglong code)
{
    const QString what = QStringLiteral("Action %1 was not deleted").arg(idAction);
    if (idAction == ReservedActionId)
        return {ExitStatus::Failed,
                QStringLiteral("%1: it is the reserved action that does nothing (-2)").arg(what),
                QStringLiteral("It may be changed, but stays.")};
    const std::optional<Action> action = service.action(idAction);
    if (!action)
        return noSuchAction(idAction);
    if (code == Refused && !action->dmId.isEmpty())
        return provisioned(what, action->dmId);
    return notStored(what, code);
}

Failure displayRefused(client::ProgrammableKeys &service, qlonglong idKey, qlonglong code)
{
    const Key key = keyOf(service, idKey);
    if (key.aom_type != ModuleOfDisplays)
        return {ExitStatus::Failed,
                QStringLiteral("Key %1 is on no add-on module that shows anything: its aom_type is "
                               "%2, not 1 (%3)")
                    .arg(number(idKey), number(key.aom_type), number(code)),
                QStringLiteral("\"progkeysctl key set %1 aom_type=1\" makes it one.").arg(idKey)};
    if (!service.action(key.idAction))
        return missingAction(QStringLiteral("Key %1 has nothing to show").arg(idKey), key.idAction);
    return {ExitStatus::Failed, QStringLiteral("The service refused (%1)").arg(code),
            QStringLiteral("Its log says more.")};
}

} // namespace commands
