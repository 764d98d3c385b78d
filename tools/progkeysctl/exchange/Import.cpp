#include "exchange/Import.h"

#include "fields/Places.h"
#include "records/ResultCode.h"

#include <QHash>

#include <csignal>

namespace exchange {
namespace {

const QString StepMember = QStringLiteral("step");
const QString FileIdMember = QStringLiteral("fileId");
const QString IdMember = QStringLiteral("id");
const QString OutcomeMember = QStringLiteral("outcome");

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
        {StepMember, isSkipped                       ? QStringLiteral("skip")
                     : step.kind == StepKind::Change ? QStringLiteral("change")
                                                     : QStringLiteral("add")},
        {QStringLiteral("what"), step.action ? QStringLiteral("action") : QStringLiteral("key")},
        {FileIdMember, output::jsonNumber(fileId)},
        {IdMember, step.here > 0 ? output::jsonNumber(step.here) : QJsonValue()},
        {QStringLiteral("content"),
         step.action ? fields::described(*step.action) : fields::described(step.key)},
        {OutcomeMember, isSkipped ? QStringLiteral("skipped") : QStringLiteral("planned")},
        {QStringLiteral("reason"), step.reason}};
}

// The plan made sure of room, action and key, so another client was faster, or a write failed.
Failure refusalOf(const Step &step, qlonglong code)
{
    const QString cause =
        !step.action && code == ResultCode::KeysFull
            ? QStringLiteral("the key limit ProgKeysMax is reached")
            : QStringLiteral("the row or its action no longer exists, or the database could not be "
                             "written; see the service's log");
    const QString what = step.action ? QStringLiteral("action %1").arg(step.action->idAction)
                                     : QStringLiteral("key %1").arg(step.key.idKey);
    return {ExitStatus::Failed,
            QStringLiteral("The service refused %1 of the file (%2): %3")
                .arg(what, QString::number(code), cause),
            QStringLiteral("Earlier steps remain in effect. Remove the cause and import the file "
                           "again to continue.")};
}

class Importer
{
public:
    explicit Importer(client::ProgrammableKeys &service) : m_service(service) {}

    /// Carries a step out and notes the outcome; returns what went wrong, if anything.
    std::optional<Failure> attempt(const Step &step, QJsonObject &row);

private:
    qlonglong call(const Step &step);

    client::ProgrammableKeys &m_service;
    QHash<qlonglong, qlonglong> m_newIds; ///< of the document's actions, by their ids there
};

std::optional<Failure> Importer::attempt(const Step &step, QJsonObject &row)
{
    try {
        const qlonglong code = call(step);
        const bool isRefused = step.kind == StepKind::Change ? code != 0 : code < 0;
        row.insert(OutcomeMember, isRefused ? QStringLiteral("failed") : QStringLiteral("done"));
        if (isRefused)
            return refusalOf(step, code);
        if (step.kind == StepKind::Add)
            row.insert(IdMember, output::jsonNumber(code));
        return std::nullopt;
    } catch (const Failure &failure) {
        // The service may have carried out a call without an answer, unless the bus denied it.
        const bool isDenied = failure.status == ExitStatus::AccessDenied;
        row.insert(OutcomeMember, isDenied ? QStringLiteral("failed") : QStringLiteral("unknown"));
        return failure;
    }
}

// Returns the id of a new row, or the result of a change.
qlonglong Importer::call(const Step &step)
{
    if (step.action) {
        const qlonglong id = m_service.addAction(*step.action);
        m_newIds.insert(step.action->idAction, id);
        return id;
    }
    Key key = step.key;
    key.idAction = step.target ? *step.target : m_newIds.value(key.idAction);
    if (step.kind == StepKind::Add)
        return m_service.createKey(key);
    key.idKey = step.here;
    return m_service.modifyKey(key);
}

} // namespace

output::Listing listingOf(const QList<Step> &steps)
{
    output::Listing listing;
    for (const char *name : {"step", "what", "fileId", "id", "content", "outcome", "reason"}) {
        const QString column = QString::fromLatin1(name);
        listing.columns.append({column, column == FileIdMember || column == IdMember});
    }
    for (const Step &step : steps)
        listing.rows.append(rowOf(step));
    return listing;
}

ImportResult carryOut(const QList<Step> &steps, client::ProgrammableKeys &service)
{
    watchSignals();
    Importer importer(service);
    ImportResult result{listingOf(steps), std::nullopt};
    for (int place = 0; place < steps.size(); ++place) {
        const Step &step = steps.at(place);
        QJsonObject &row = result.steps.rows[place];
        if (step.kind == StepKind::Skip)
            continue;
        if (isInterrupted && !result.failure)
            result.failure =
                Failure{ExitStatus::Failed, QStringLiteral("The import was interrupted"),
                        QStringLiteral("Import the same file again to continue.")};
        if (result.failure)
            row.insert(OutcomeMember, QStringLiteral("not done"));
        else
            result.failure = importer.attempt(step, row);
    }
    return result;
}

} // namespace exchange
