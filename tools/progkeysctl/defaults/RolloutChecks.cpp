#include "defaults/RolloutChecks.h"

#include "defaults/RecordChecks.h"
#include "output/Text.h"
#include "provisioning/ProvisionedRecords.h"

#include <QHash>
#include <QSet>

namespace defaults {
namespace {

using output::quoted;
using provisioning::Record;

constexpr int IdentifierField = 1;
constexpr int ContainerField = 2;
constexpr int PositionField = 3;

void add(Setting &setting, Finding finding, const QString &message)
{
    finding.message = message;
    setting.findings.append(finding);
}

// The same for identifiers that are easily confused.
QString simplified(const QString &identifier)
{
    return identifier.trimmed().toLower();
}

// What only one key can occupy; empty for a key of another type.
QString placeOf(const Key &key)
{
    if (key.type == KeyType::Set)
        return QStringLiteral("position %1 of the container %2")
            .arg(QString::number(key.position), quoted(key.container));
    if (key.type == KeyType::AddOnModule)
        return QStringLiteral("key %1 of the add-on module of type %2 at address %3")
            .arg(QString::number(key.position), QString::number(key.aom_type),
                 QString::number(key.aom_addr));
    return {};
}

// A message may show only the start of a container.
QString identityOf(const Key &key, const QString &place)
{
    return key.type == KeyType::Set ? place + QChar(0) + key.container : place;
}

QSet<int> recordsWith(const Setting &setting, const char *code)
{
    QSet<int> records;
    for (const Finding &finding : setting.findings) {
        if (finding.code == QLatin1String(code))
            records.insert(finding.record);
    }
    return records;
}

Finding takenPlace(const Record &record)
{
    const bool isOfTheSet = provisioning::toKey(record).type == KeyType::Set;
    Finding finding =
        problem(Severity::Error, "same-place", record, isOfTheSet ? ContainerField : PositionField);
    const Span position = spanOf(record.fields.at(PositionField - 1));
    finding.place.length = position.end() - finding.place.start;
    return finding;
}

} // namespace

void checkIdentifiers(Setting &actions)
{
    QHash<QString, int> records;
    QHash<QString, QString> similar;
    for (const Record &record : std::as_const(actions.records)) {
        const QString dmId = identifierOf(record);
        if (!record.isAccepted() || dmId.isEmpty())
            continue;
        const QString other = similar.value(simplified(dmId), dmId);
        if (records.contains(dmId))
            add(actions, problem(Severity::Error, "repeated-identifier", record, IdentifierField),
                QStringLiteral("record %1 already has the identifier %2")
                    .arg(QString::number(records.value(dmId)), quoted(dmId)));
        else if (other != dmId)
            add(actions, problem(Severity::Warning, "similar-identifier", record, IdentifierField),
                QStringLiteral("the identifier %1 differs from %2 of record %3 only in case or "
                               "blanks")
                    .arg(quoted(dmId), quoted(other), QString::number(records.value(other))));
        if (!records.contains(dmId))
            records.insert(dmId, record.number);
        similar.insert(simplified(dmId), other);
    }
}

void checkPlaces(Setting &keys)
{
    const QSet<int> invalid = recordsWith(keys, "not-a-number");
    QHash<QString, int> records;
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted() || invalid.contains(record.number))
            continue;
        const Key key = provisioning::toKey(record);
        const QString place = placeOf(key);
        const QString identity = identityOf(key, place);
        if (place.isEmpty())
            continue;
        if (records.contains(identity))
            add(keys, takenPlace(record),
                QStringLiteral("record %1 already has %2")
                    .arg(QString::number(records.value(identity)), place));
        else
            records.insert(identity, record.number);
    }
}

void checkActionsOf(Setting &keys, const Setting &actions)
{
    QSet<QString> identifiers;
    QHash<QString, QString> similar;
    for (const Record &record : actions.records) {
        const QString dmId = identifierOf(record);
        identifiers.insert(dmId);
        similar.insert(simplified(dmId), dmId);
    }
    for (const Record &record : std::as_const(keys.records)) {
        const QString dmId = identifierOf(record);
        if (!record.isAccepted() || dmId.isEmpty() || identifiers.contains(dmId))
            continue;
        QString message =
            QStringLiteral("no action has the identifier %1, and the phone drops the key")
                .arg(quoted(dmId));
        if (similar.contains(simplified(dmId)))
            message += QStringLiteral("; %1 differs only in case or blanks")
                           .arg(quoted(similar.value(simplified(dmId))));
        add(keys, problem(Severity::Error, "key-without-action", record, IdentifierField), message);
    }
}

void checkLimit(Setting &keys, int limit)
{
    const QSet<int> dropped = recordsWith(keys, "key-without-action");
    int count = 0;
    const Record *first = nullptr;
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted() || provisioning::toKey(record).type != KeyType::Set ||
            dropped.contains(record.number))
            continue;
        if (++count > limit && !first)
            first = &record;
    }
    if (first)
        add(keys, problem(Severity::Error, "too-many-keys", *first),
            QStringLiteral("there are %1 of the set, and the limit is %2: the phone refuses this "
                           "one and the following keys of the set")
                .arg(output::counted(count, QStringLiteral("key")), QString::number(limit)));
}

void checkLimitText(Setting &limit)
{
    bool isNumber = false;
    limit.text.toInt(&isNumber);
    if (!isNumber)
        add(limit,
            problemAt(limit, Severity::Error, "not-a-number",
                      {0, static_cast<int>(limit.text.size())}),
            QStringLiteral("the limit %1 is not a 32-bit decimal number and becomes 0: no key of "
                           "the set can be created")
                .arg(quoted(limit.text)));
}

} // namespace defaults
