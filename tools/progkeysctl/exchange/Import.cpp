#include "exchange/Import.h"

#include "fields/Places.h"
#include "records/ResultCode.h"
#include "text/Format.h"

#include <QHash>
#include <QMap>

#include <csignal>

namespace exchange {
namespace {

volatile std::sig_atomic_t isInterrupted = 0;

// The first signal lets the current step finish; the second one ends the process.
void watchSignals()
{
    struct sigaction action = {};
    action.sa_handler = [](int) { isInterrupted = 1; };
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
}

QString nameOf(StepKind kind)
{
    return kind == StepKind::Add ? "add"_s : kind == StepKind::Change ? "change"_s : "skip"_s;
}

QJsonObject rowOf(const Step &step)
{
    const auto &action = step.action;
    return {{"step"_s, nameOf(step.kind)},
            {"what"_s, action ? "action"_s : "key"_s},
            {"fileId"_s, output::jsonNumber(action ? action->idAction : step.key.idKey)},
            {"id"_s, step.here > 0 ? output::jsonNumber(step.here) : QJsonValue()},
            {"content"_s, action ? fields::described(*action) : fields::described(step.key)},
            {"outcome"_s, step.outcome},
            {"reason"_s, step.reason}};
}

// The plan made sure of room, action and key, so another client was faster, or a write failed.
Failure refusalOf(const Step &step, qlonglong code)
{
    const QString cause =
        !step.action && code == ResultCode::KeysFull
            ? "the key limit ProgKeysMax is reached"_s
            : "the row or its action no longer exists, or the database could not be written; see "
              "the service's log"_s;
    const QString what =
        step.action ? format("action %1", step.action->idAction) : format("key %1", step.key.idKey);
    return {ExitStatus::Failed,
            format("The service refused %1 of the file (%2): %3", what, code, cause),
            "Earlier steps remain in effect. Remove the cause and import the file again to "
            "continue."_s};
}

// The ids here of the actions that were added, by their ids in the document.
using NewIds = QHash<qlonglong, qlonglong>;

// Returns the id of a new row, or the result of a change.
qlonglong call(const client::Phone &phone, const Step &step, const NewIds &newIds)
{
    if (step.action)
        return phone.call<qlonglong>("addAction", *step.action);
    Key key = step.key;
    key.idAction = step.target ? *step.target : newIds.value(key.idAction);
    if (step.kind == StepKind::Add)
        return phone.call<qlonglong>("createProgrammableKey", key);
    key.idKey = step.here;
    return phone.call<int>("modifyProgrammableKey", key);
}

void carryOutStep(Step &step, const client::Phone &phone, NewIds &newIds)
{
    step.outcome = "unknown"_s; // if the service does not answer
    const qlonglong code = call(phone, step, newIds);
    const bool isRefused = step.kind == StepKind::Change ? code != 0 : code < 0;
    step.outcome = isRefused ? "failed"_s : "done"_s;
    if (isRefused)
        throw refusalOf(step, code);
    if (step.kind == StepKind::Add)
        step.here = code;
    if (step.action)
        newIds.insert(step.action->idAction, code);
}

} // namespace

output::Listing listingOf(const QList<Step> &steps)
{
    output::Listing listing;
    const QStringList counted{"planned"_s, "done"_s, "skipped"_s};
    QMap<StepKind, int> counts;
    for (const Step &step : steps) {
        listing.rows.append(rowOf(step));
        counts[step.kind] += counted.contains(step.outcome) ? 1 : 0;
    }
    listing.legend = format("%1 added, %2 changed, %3 skipped", counts[StepKind::Add],
                            counts[StepKind::Change], counts[StepKind::Skip]);
    return listing;
}

std::optional<Failure> carryOut(QList<Step> &steps, const client::Phone &phone)
{
    watchSignals();
    NewIds newIds;
    std::optional<Failure> failure;
    for (Step &step : steps) {
        if (step.kind == StepKind::Skip)
            continue;
        if (isInterrupted && !failure)
            failure = Failure{ExitStatus::Failed, "The import was interrupted"_s,
                              "Import the same file again to continue."_s};
        if (failure) {
            step.outcome = "not done"_s;
            continue;
        }
        try {
            carryOutStep(step, phone, newIds);
        } catch (const Failure &caught) {
            failure = caught;
            if (caught.status == ExitStatus::AccessDenied)
                step.outcome = "failed"_s;
        }
    }
    return failure;
}

} // namespace exchange
