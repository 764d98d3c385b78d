#include "exchange/Import.h"

#include <QHash>

#include <csignal>

namespace exchange {
namespace {

const QString StepMember = QStringLiteral("step");
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

QString nameOf(StepKind kind)
{
    switch (kind) {
    case StepKind::Add:
        return QStringLiteral("add");
    case StepKind::Change:
        return QStringLiteral("change");
    case StepKind::Skip:
        break;
    }
    return QStringLiteral("skip");
}

QString contentOf(const Step &step)
{
    if (step.action)
        return step.action->label.isEmpty() ? step.action->action : step.action->label;
    const Key &key = step.exported.key;
    return key.type == KeyType::AddOnModule
               ? QStringLiteral("module %1, key %2").arg(key.aom_addr).arg(key.position)
               : QStringLiteral("%1, position %2")
                     .arg(key.container, QString::number(key.position));
}

QJsonObject rowOf(const Step &step)
{
    const bool isSkipped = step.kind == StepKind::Skip;
    const qlonglong fileId = step.action ? step.action->idAction : step.exported.key.idKey;
    return {
        {StepMember, nameOf(step.kind)},
        {QStringLiteral("what"), step.action ? QStringLiteral("action") : QStringLiteral("key")},
        {QStringLiteral("fileId"), output::jsonNumber(fileId)},
        {IdMember, step.here > 0 ? output::jsonNumber(step.here) : QJsonValue()},
        {QStringLiteral("content"), contentOf(step)},
        {OutcomeMember, isSkipped ? QStringLiteral("skipped") : QStringLiteral("planned")},
        {QStringLiteral("reason"), step.reason}};
}

// The service refused a step, which therefore was not carried out.
struct Refusal : Failure
{
};

// The plan made sure of room, action and key, so another client was faster, or a write failed.
[[noreturn]] void throwRefusal(const Step &step, qlonglong code)
{
    constexpr qlonglong LimitReached = -1;
    const QString cause =
        !step.action && code == LimitReached
            ? QStringLiteral("the key limit ProgKeysMax is reached")
            : QStringLiteral("the row or its action no longer exists, or the database could not be "
                             "written; see the service's log");
    const QString what = step.action ? QStringLiteral("action %1").arg(step.action->idAction)
                                     : QStringLiteral("key %1").arg(step.exported.key.idKey);
    throw Refusal{
        {ExitStatus::Failed,
         QStringLiteral("The service refused %1 of the file (%2): %3")
             .arg(what, QString::number(code), cause),
         QStringLiteral("Earlier steps remain in effect. Remove the cause and import the file "
                        "again to continue.")}};
}

class Importer
{
public:
    explicit Importer(client::ProgrammableKeys &service) : m_service(service) {}

    /// Returns the id of the row here.
    qlonglong carryOut(const Step &step);

private:
    client::ProgrammableKeys &m_service;
    QHash<qlonglong, qlonglong> m_newIds; ///< of the document's actions, by their ids there
};

qlonglong Importer::carryOut(const Step &step)
{
    Key key = step.exported.key;
    qlonglong code = 0;
    if (step.action) {
        code = m_service.addAction(*step.action);
        m_newIds.insert(step.action->idAction, code);
    } else {
        key.idAction = step.target ? *step.target : m_newIds.value(key.idAction);
        const bool isNew = step.kind == StepKind::Add;
        key.idKey = isNew ? key.idKey : step.here;
        code = isNew ? m_service.createKey(key) : m_service.modifyKey(key);
    }
    if (step.kind == StepKind::Change ? code != 0 : code < 0)
        throwRefusal(step, code);
    return step.kind == StepKind::Change ? step.here : code;
}

// Carries a step out and notes the outcome; returns what went wrong, if anything.
std::optional<Failure> attempt(Importer &importer, const Step &step, QJsonObject &row)
{
    try {
        row.insert(IdMember, output::jsonNumber(importer.carryOut(step)));
        row.insert(OutcomeMember, QStringLiteral("done"));
        return std::nullopt;
    } catch (const Refusal &refusal) {
        row.insert(OutcomeMember, QStringLiteral("failed"));
        return refusal;
    } catch (const Failure &failure) {
        // The service may have carried out a call without an answer, unless the bus denied it.
        const bool isDenied = failure.status == ExitStatus::AccessDenied;
        row.insert(OutcomeMember, isDenied ? QStringLiteral("failed") : QStringLiteral("unknown"));
        return failure;
    }
}

} // namespace

output::Listing listingOf(const ImportPlan &plan)
{
    output::Listing listing;
    listing.columns = {{StepMember, QStringLiteral("STEP")},
                       {QStringLiteral("what"), QStringLiteral("WHAT")},
                       {QStringLiteral("fileId"), QStringLiteral("FILEID"), true},
                       {IdMember, QStringLiteral("ID"), true},
                       {QStringLiteral("content"), QStringLiteral("CONTENT")},
                       {OutcomeMember, QStringLiteral("OUTCOME")},
                       {QStringLiteral("reason"), QStringLiteral("REASON")}};
    for (const Step &step : plan.steps)
        listing.rows.append(rowOf(step));
    return listing;
}

ImportResult carryOut(const ImportPlan &plan, client::ProgrammableKeys &service)
{
    watchSignals();
    Importer importer(service);
    ImportResult result{listingOf(plan), std::nullopt};
    for (int place = 0; place < plan.steps.size(); ++place) {
        const Step &step = plan.steps.at(place);
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
            result.failure = attempt(importer, step, row);
    }
    return result;
}

} // namespace exchange
