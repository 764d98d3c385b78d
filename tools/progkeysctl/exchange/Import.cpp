#include "exchange/Import.h"

#include "fields/Places.h"
#include "records/ResultCode.h"
#include "text/Format.h"

#include <QHash>

#include <csignal>

namespace exchange {
namespace {

const QString StepMember = "step"_s;
const QString IdMember = "id"_s;
const QString OutcomeMember = "outcome"_s;

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

QJsonObject rowOf(const Step &step)
{
    const bool isSkipped = step.kind == StepKind::Skip;
    const qlonglong fileId = step.action ? step.action->idAction : step.key.idKey;
    return {
        {StepMember, isSkipped                       ? "skip"_s
                     : step.kind == StepKind::Change ? "change"_s
                                                     : "add"_s},
        {"what"_s, step.action ? "action"_s : "key"_s},
        {"fileId"_s, output::jsonNumber(fileId)},
        {IdMember, step.here > 0 ? output::jsonNumber(step.here) : QJsonValue()},
        {"content"_s, step.action ? fields::described(*step.action) : fields::described(step.key)},
        {OutcomeMember, isSkipped ? "skipped"_s : "planned"_s},
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

class Importer
{
public:
    explicit Importer(const client::Phone &phone) : m_phone(phone) {}

    /// Carries a step out and notes the outcome; returns what went wrong, if anything.
    std::optional<Failure> attempt(const Step &step, QJsonObject &row);

private:
    qlonglong call(const Step &step);

    const client::Phone &m_phone;
    QHash<qlonglong, qlonglong> m_newIds; ///< of the document's actions, by their ids there
};

std::optional<Failure> Importer::attempt(const Step &step, QJsonObject &row)
{
    try {
        const qlonglong code = call(step);
        const bool isRefused = step.kind == StepKind::Change ? code != 0 : code < 0;
        row.insert(OutcomeMember, isRefused ? "failed"_s : "done"_s);
        if (isRefused)
            return refusalOf(step, code);
        if (step.kind == StepKind::Add)
            row.insert(IdMember, output::jsonNumber(code));
        return std::nullopt;
    } catch (const Failure &failure) {
        // The service may have carried out a call without an answer, unless the bus denied it.
        const bool isDenied = failure.status == ExitStatus::AccessDenied;
        row.insert(OutcomeMember, isDenied ? "failed"_s : "unknown"_s);
        return failure;
    }
}

// Returns the id of a new row, or the result of a change.
qlonglong Importer::call(const Step &step)
{
    if (step.action) {
        const qlonglong id = m_phone.call<qlonglong>("addAction", *step.action);
        m_newIds.insert(step.action->idAction, id);
        return id;
    }
    Key key = step.key;
    key.idAction = step.target ? *step.target : m_newIds.value(key.idAction);
    if (step.kind == StepKind::Add)
        return m_phone.call<qlonglong>("createProgrammableKey", key);
    key.idKey = step.here;
    return m_phone.call<int>("modifyProgrammableKey", key);
}

} // namespace

output::Listing listingOf(const QList<Step> &steps)
{
    output::Listing listing;
    for (const Step &step : steps)
        listing.rows.append(rowOf(step));
    return listing;
}

ImportResult carryOut(const QList<Step> &steps, const client::Phone &phone)
{
    watchSignals();
    Importer importer(phone);
    ImportResult result{listingOf(steps), std::nullopt};
    for (int place = 0; place < steps.size(); ++place) {
        const Step &step = steps.at(place);
        QJsonObject &row = result.steps.rows[place];
        if (step.kind == StepKind::Skip)
            continue;
        if (isInterrupted && !result.failure)
            result.failure = Failure{ExitStatus::Failed, "The import was interrupted"_s,
                                     "Import the same file again to continue."_s};
        if (result.failure)
            row.insert(OutcomeMember, "not done"_s);
        else
            result.failure = importer.attempt(step, row);
    }
    return result;
}

} // namespace exchange
