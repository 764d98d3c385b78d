#include "commands/RecordCommands.h"

namespace commands {
namespace {

// Whether the failure concerns one record only.
bool isOfOneRecord(const Failure &failure)
{
    return failure.status == ExitStatus::Failed || failure.status == ExitStatus::NotFound;
}

} // namespace

Failure missingAction(const QString &what, qlonglong idAction)
{
    return {
        ExitStatus::NotFound, format("%1: there is no action %2 (-2)", what, idAction),
        "\"progkeysctl action list\" lists the actions; \"progkeysctl action add\" adds one."_s};
}

Failure notStored(const QString &what, qlonglong code)
{
    return {ExitStatus::Failed, format("%1: the database could not be written (%2)", what, code),
            "See the log of the service. Check the free space and the permissions of its data "
            "directory."_s};
}

Failure notDeleted(const QString &what, const QString &dmId, qlonglong code, const QString &advice)
{
    if (code != ResultCode::Refused || dmId.isEmpty())
        return notStored(what + " was not deleted"_s, code);
    return {
        ExitStatus::Failed,
        format("%1 cannot be deleted: it is provisioned, with the dmId \"%2\" (-2)", what, dmId),
        advice};
}

void deleteEach(cli::Session &session, const QList<QByteArray> &ids,
                const std::function<QJsonObject(qlonglong)> &remove)
{
    output::Listing removed;
    for (const QByteArray &id : ids) {
        try {
            removed.rows.append(remove(id.toLongLong()));
        } catch (const Failure &failure) {
            if (!isOfOneRecord(failure))
                throw;
            session.out().flush();
            output::sayFailure(failure);
            if (session.status() == ExitStatus::Done)
                session.exitWith(failure.status);
        }
    }
    if (!session.out().isForPeople())
        session.out().list(removed);
}

} // namespace commands
