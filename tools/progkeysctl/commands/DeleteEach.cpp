#include "commands/DeleteEach.h"

#include "outcome/Failure.h"

namespace commands {
namespace {

// Whether the failure concerns one row only.
bool isOfOneRow(const Failure &failure)
{
    return failure.status == ExitStatus::Failed || failure.status == ExitStatus::NotFound;
}

} // namespace

ExitStatus deleteEach(cli::Session &session, const QList<qlonglong> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove)
{
    session.out().requireFields(columns);
    ExitStatus status = ExitStatus::Done;
    output::Listing removed;
    removed.columns = columns;
    for (const qlonglong id : ids) {
        try {
            removed.rows.append(remove(id));
        } catch (const Failure &failure) {
            if (!isOfOneRow(failure))
                throw;
            session.out().flush();
            output::sayFailure(failure);
            if (status == ExitStatus::Done)
                status = failure.status;
        }
    }
    if (!session.out().isForPeople())
        session.out().list(removed);
    return status;
}

} // namespace commands
