#include "commands/Refusals.h"

namespace commands {
namespace {

constexpr qlonglong LimitReached = -1;
constexpr qlonglong Refused = -2;

Failure notStored(const QString &what, qlonglong code)
{
    return {ExitStatus::Failed,
            QStringLiteral("%1: the database could not be written (%2)").arg(what).arg(code),
            QStringLiteral("See the log of the service. Check the free space and the permissions "
                           "of its data directory.")};
}

Failure provisioned(const QString &what, const QString &dmId, const QString &advice)
{
    return {ExitStatus::Failed,
            QStringLiteral("%1 cannot be deleted: it is provisioned, with the dmId \"%2\" (-2)")
                .arg(what, dmId),
            advice};
}

} // namespace

Failure noSuchRecord(const QString &noun, qlonglong id)
{
    return {ExitStatus::NotFound, QStringLiteral("There is no %1 %2").arg(noun).arg(id),
            QStringLiteral("\"progkeysctl %1 list\" lists the %1s.").arg(noun)};
}

Failure missingAction(const QString &what, qlonglong idAction)
{
    return {ExitStatus::NotFound,
            QStringLiteral("%1: there is no action %2 (-2)").arg(what).arg(idAction),
            QStringLiteral("\"progkeysctl action list\" lists the actions; \"progkeysctl action "
                           "add\" adds one.")};
}

Failure writeRefused(const client::ProgrammableKeys &service, const Key &key, const QString &what,
                     qlonglong code)
{
    if (code == LimitReached)
        return {ExitStatus::Failed, QStringLiteral("%1: the key limit is reached (-1)").arg(what),
                QStringLiteral("Delete a key of type 0, or raise the setting ProgKeysMax. "
                               "\"progkeysctl status\" shows both numbers.")};
    if (code == Refused && !service.action(key.idAction))
        return missingAction(what, key.idAction);
    return notStored(what, code);
}

Failure writeRefused(const client::ProgrammableKeys & /*service*/, const Action & /*action*/,
                     const QString &what, qlonglong code)
{
    return notStored(what, code);
}

Failure deletionRefused(const Key &key, qlonglong code)
{
    const QString what = QStringLiteral("Key %1").arg(key.idKey);
    if (code == Refused && !key.dmId.isEmpty())
        return provisioned(what, key.dmId,
                           QStringLiteral("Remove it from the setting DefaultKeys: then the next "
                                          "start of the service deletes it."));
    return notStored(what + QStringLiteral(" was not deleted"), code);
}

Failure deletionRefused(const Action &action, qlonglong code)
{
    const QString what = QStringLiteral("Action %1").arg(action.idAction);
    if (action.idAction == ReservedActionId)
        return {ExitStatus::Failed,
                what + QStringLiteral(" cannot be deleted: it is the reserved action (-2)"),
                QStringLiteral("You can change it.")};
    if (code == Refused && !action.dmId.isEmpty())
        return provisioned(what, action.dmId,
                           QStringLiteral("It stays even if it is removed from the setting "
                                          "DefaultActions; after that, \"progkeysctl restore\" "
                                          "deletes it."));
    return notStored(what + QStringLiteral(" was not deleted"), code);
}

} // namespace commands
