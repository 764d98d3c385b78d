#include "commands/Refusals.h"

#include "text/Format.h"

namespace commands {
namespace {

constexpr qlonglong LimitReached = -1;
constexpr qlonglong Refused = -2;

Failure notStored(const QString &what, qlonglong code)
{
    return {ExitStatus::Failed, format("%1: the database could not be written (%2)", what, code),
            "See the log of the service. Check the free space and the permissions of its data "
            "directory."_s};
}

Failure provisioned(const QString &what, const QString &dmId, const QString &advice)
{
    return {
        ExitStatus::Failed,
        format("%1 cannot be deleted: it is provisioned, with the dmId \"%2\" (-2)", what, dmId),
        advice};
}

} // namespace

Failure noSuchRecord(const QString &noun, qlonglong id)
{
    return {ExitStatus::NotFound, format("There is no %1 %2", noun, id),
            format("\"progkeysctl %1 list\" lists the %1s.", noun)};
}

Failure missingAction(const QString &what, qlonglong idAction)
{
    return {
        ExitStatus::NotFound, format("%1: there is no action %2 (-2)", what, idAction),
        "\"progkeysctl action list\" lists the actions; \"progkeysctl action add\" adds one."_s};
}

Failure writeRefused(const client::ProgrammableKeys &service, const Key &key, const QString &what,
                     qlonglong code)
{
    if (code == LimitReached)
        return {ExitStatus::Failed, format("%1: the key limit is reached (-1)", what),
                "Delete a key of type 0, or raise the setting ProgKeysMax. \"progkeysctl status\" "
                "shows both numbers."_s};
    if (code == Refused && service.call<ListAction>("getAction", key.idAction).isEmpty())
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
    const QString what = format("Key %1", key.idKey);
    if (code == Refused && !key.dmId.isEmpty())
        return provisioned(
            what, key.dmId,
            "Remove it from the setting DefaultKeys: then the next start of the service deletes "
            "it."_s);
    return notStored(what + " was not deleted"_s, code);
}

Failure deletionRefused(const Action &action, qlonglong code)
{
    const QString what = format("Action %1", action.idAction);
    if (action.idAction == ReservedActionId)
        return {ExitStatus::Failed, what + " cannot be deleted: it is the reserved action (-2)"_s,
                "You can change it."_s};
    if (code == Refused && !action.dmId.isEmpty())
        return provisioned(
            what, action.dmId,
            "It stays even if it is removed from the setting DefaultActions; after that, "
            "\"progkeysctl restore\" deletes it."_s);
    return notStored(what + " was not deleted"_s, code);
}

} // namespace commands
