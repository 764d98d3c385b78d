#include "exchange/ImportRun.h"

#include "exchange/Interruption.h"

#include <QHash>

namespace exchange {
namespace {

const QString Planned = QStringLiteral("planned");
const QString Done = QStringLiteral("done");
const QString Failed = QStringLiteral("failed");
const QString Unknown = QStringLiteral("unknown");
const QString NotDone = QStringLiteral("not done");
const QString Skipped = QStringLiteral("skipped");

const QString StepMember = QStringLiteral("step");
const QString OutcomeMember = QStringLiteral("outcome");
const QString IdMember = QStringLiteral("id");
const QString ReasonMember = QStringLiteral("reason");

QList<output::Column> columns()
{
    return {{StepMember, QStringLiteral("STEP")},
            {QStringLiteral("what"), QStringLiteral("WHAT")},
            {QStringLiteral("fileId"), QStringLiteral("IN FILE"), true},
            {IdMember, QStringLiteral("HERE"), true},
            {QStringLiteral("content"), QStringLiteral("CONTENT")},
            {OutcomeMember, QStringLiteral("OUTCOME")},
            {ReasonMember, QStringLiteral("REASON")}};
}

QString nameOf(StepKind kind)
{
    switch (kind) {
    case StepKind::Add:
        return QStringLiteral("add");
    case StepKind::Change:
        return QStringLiteral("change");
    default:
        return QStringLiteral("skip");
    }
}

QJsonObject row(StepKind kind, const char *what, qlonglong fileId, qlonglong here,
                const QString &content, const QString &reason)
{
    return {{StepMember, nameOf(kind)},
            {QStringLiteral("what"), QString::fromLatin1(what)},
            {QStringLiteral("fileId"), output::jsonNumber(fileId)},
            {IdMember, here > 0 ? output::jsonNumber(here) : QJsonValue()},
            {QStringLiteral("content"), content},
            {OutcomeMember, kind == StepKind::Skip ? Skipped : Planned},
            {ReasonMember, reason}};
}

QString contentOf(const Action &action)
{
    return action.label.isEmpty() ? action.action : action.label;
}

QString contentOf(const Key &key)
{
    return key.type == KeyType::AddOnModule
               ? QStringLiteral("module %1, key %2").arg(key.aom_addr).arg(key.position)
               : QStringLiteral("%1, position %2")
                     .arg(key.container, QString::number(key.position));
}

QJsonObject rowOf(const ActionStep &step)
{
    return row(step.kind, "action", step.action.idAction, step.here, contentOf(step.action),
               step.reason);
}

QJsonObject rowOf(const KeyStep &step)
{
    return row(step.kind, "key", step.exported.key.idKey, step.here, contentOf(step.exported.key),
               step.reason);
}

void count(ImportResult &result, StepKind kind)
{
    int &counter = kind == StepKind::Add      ? result.added
                   : kind == StepKind::Change ? result.changed
                                              : result.skipped;
    ++counter;
}

/// Does one step after the other and notes what became of each.
class Importer
{
public:
    Importer(const ImportPlan &plan, client::ProgrammableKeys &service, const Progress &progress)
        : m_plan(plan), m_service(service), m_progress(progress)
    {
        m_result.steps = describe(plan).steps;
    }

    ImportResult run();

private:
    qlonglong doAction(const ActionStep &step);
    qlonglong doKey(const KeyStep &step);
    template <typename Step, typename Do>
    void doStep(const Step &step, Do perform);
    void fail(const Failure &failure, const QString &outcome);

    const ImportPlan &m_plan;
    client::ProgrammableKeys &m_service;
    const Progress &m_progress;
    const Interruption m_interruption;
    ImportResult m_result;
    QHash<qlonglong, qlonglong> m_newIds; ///< of the document's actions, by the ids they had
    int m_place = 0;
};

/// An answer of the service, so that it is known that the step was not done.
struct Refusal : Failure
{
};

Refusal refusal(const QString &what, qlonglong code, const QString &cause)
{
    return {{ExitStatus::Failed,
             QStringLiteral("%1 was refused (%2), and the import stopped there: %3")
                 .arg(what, QString::number(code), cause),
             QStringLiteral("What was done before is told above and stays; import the same file "
                            "again once the cause is mended, and it goes on from there.")}};
}

QString notStored()
{
    return QStringLiteral("the database could not be written, as the service's log says");
}

// The plan had found room, the action and the key; somebody else was faster.
QString causeOf(client::ProgrammableKeys &service, const Key &key, const KeyStep &step,
                qlonglong code)
{
    constexpr qlonglong LimitReached = -1;
    constexpr qlonglong Refused = -2;
    if (code == LimitReached)
        return QStringLiteral("the set has as many keys as ProgKeysMax allows");
    if (code == Refused && !service.action(key.idAction))
        return QStringLiteral("its action %1 is gone").arg(key.idAction);
    if (code == Refused && step.kind == StepKind::Change && !service.key(key.idKey))
        return QStringLiteral("key %1 is gone").arg(key.idKey);
    return notStored();
}

qlonglong Importer::doAction(const ActionStep &step)
{
    const qlonglong id = m_service.addAction(step.action);
    if (id < 0)
        throw refusal(QStringLiteral("Action %1 of the file").arg(step.action.idAction), id,
                      notStored());
    m_newIds.insert(step.action.idAction, id);
    return id;
}

qlonglong Importer::doKey(const KeyStep &step)
{
    Key key = step.exported.key;
    key.idAction = step.idAction ? *step.idAction : m_newIds.value(key.idAction);
    const QString what = QStringLiteral("Key %1 of the file").arg(step.exported.key.idKey);
    if (step.kind == StepKind::Add) {
        const qlonglong id = m_service.createKey(key);
        if (id < 0)
            throw refusal(what, id, causeOf(m_service, key, step, id));
        return id;
    }
    key.idKey = step.here;
    const int code = m_service.modifyKey(key);
    if (code != 0)
        throw refusal(what, code, causeOf(m_service, key, step, code));
    return step.here;
}

void Importer::fail(const Failure &failure, const QString &outcome)
{
    m_result.failure = failure;
    m_result.steps.rows[m_place].insert(OutcomeMember, outcome);
}

template <typename Step, typename Do>
void Importer::doStep(const Step &step, Do perform)
{
    QJsonObject &row = m_result.steps.rows[m_place];
    if (step.kind != StepKind::Skip && (m_result.failure || m_interruption.hasCome())) {
        row.insert(OutcomeMember, NotDone);
        if (!m_result.failure)
            m_result.failure =
                Failure{ExitStatus::Failed, QStringLiteral("The import was interrupted"),
                        QStringLiteral("Import the same file again to go on.")};
    } else if (step.kind != StepKind::Skip) {
        try {
            row.insert(IdMember, output::jsonNumber(perform(step)));
            row.insert(OutcomeMember, Done);
            count(m_result, step.kind);
        } catch (const Refusal &refusal) {
            fail(refusal, Failed);
        } catch (const Failure &failure) {
            // A call that was not answered may have been carried out, unless the bus held it back.
            fail(failure, failure.status == ExitStatus::AccessDenied ? Failed : Unknown);
        }
    } else {
        count(m_result, step.kind);
    }
    ++m_place;
    m_progress(m_place, static_cast<int>(m_result.steps.rows.size()));
}

ImportResult Importer::run()
{
    for (const ActionStep &step : m_plan.actions)
        doStep(step, [this](const ActionStep &each) { return doAction(each); });
    for (const KeyStep &step : m_plan.keys)
        doStep(step, [this](const KeyStep &each) { return doKey(each); });
    return m_result;
}

} // namespace

ImportResult describe(const ImportPlan &plan)
{
    ImportResult result;
    result.steps.columns = columns();
    for (const ActionStep &step : plan.actions) {
        result.steps.rows.append(rowOf(step));
        count(result, step.kind);
    }
    for (const KeyStep &step : plan.keys) {
        result.steps.rows.append(rowOf(step));
        count(result, step.kind);
    }
    return result;
}

ImportResult carryOut(const ImportPlan &plan, client::ProgrammableKeys &service,
                      const Progress &progress)
{
    return Importer(plan, service, progress).run();
}

} // namespace exchange
