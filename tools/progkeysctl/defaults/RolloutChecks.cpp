#include "defaults/RolloutChecks.h"

#include "defaults/Messages.h"
#include "provisioning/ProvisionedRecords.h"

#include <QHash>
#include <QSet>

#include <optional>

namespace defaults {
namespace {

using provisioning::Record;

constexpr int IdentifierField = 1;
constexpr int ContainerField = 2;
constexpr int PositionField = 3;

// Where an identifier stands among the actions.
struct Place
{
    QString file;
    int record = 0;
    bool isAccepted = false;
};

QHash<QString, Place> placesOf(const QList<const Setting *> &actions)
{
    QHash<QString, Place> places;
    for (const Setting *setting : actions) {
        for (const Record &record : setting->records) {
            const QString &dmId = record.fields.first().text;
            if (!places.value(dmId).isAccepted)
                places.insert(dmId, {setting->file, record.number, record.isAccepted()});
        }
    }
    return places;
}

QString missingAction(const QString &dmId, const std::optional<Place> &refused)
{
    if (!refused)
        return QStringLiteral("no action has the identifier %1, so the phone drops the key")
            .arg(quoted(dmId));
    return QStringLiteral("the action %1, record %2 of %3, is refused, so the phone drops the key")
        .arg(quoted(dmId), QString::number(refused->record), refused->file);
}

// What two keys cannot share; nothing for a key of a type that has no place.
std::optional<QString> placeOf(const Key &key)
{
    if (key.type == KeyType::Set)
        return QStringLiteral("position %1 of the container %2")
            .arg(QString::number(key.position), quoted(key.container));
    if (key.type == KeyType::AddOnModule)
        return QStringLiteral("key %1 of the add-on module of kind %2 at address %3")
            .arg(QString::number(key.position), QString::number(key.aom_type),
                 QString::number(key.aom_addr));
    return std::nullopt;
}

// Told apart by more than what is shown of a container.
QString identityOf(const Key &key, const QString &place)
{
    return key.type == KeyType::Set ? place + QChar(0) + key.container : place;
}

QSet<int> droppedRecords(const Setting &keys)
{
    QSet<int> dropped;
    for (const Finding &finding : keys.findings) {
        if (finding.code == QLatin1String("key-without-action"))
            dropped.insert(finding.record);
    }
    return dropped;
}

void complainOfTaken(Setting &keys, const Record &record, const QString &place, int taker)
{
    const bool isOfTheSet = provisioning::toKey(record).type == KeyType::Set;
    Finding finding = complaint(Severity::Error, "same-place", record,
                                isOfTheSet ? ContainerField : PositionField);
    const Span position = spanOf(record.fields.at(PositionField - 1));
    if (isOfTheSet)
        finding.place.length = position.end() - finding.place.start;
    finding.message = QStringLiteral("record %1 has %2 already").arg(QString::number(taker), place);
    keys.findings.append(finding);
}

} // namespace

void checkIdentifiers(Setting &actions)
{
    QHash<QString, int> seen;
    for (const Record &record : std::as_const(actions.records)) {
        const QString &dmId = record.fields.first().text;
        if (!record.isAccepted() || dmId.isEmpty())
            continue;
        if (!seen.contains(dmId)) {
            seen.insert(dmId, record.number);
            continue;
        }
        Finding finding =
            complaint(Severity::Error, "repeated-identifier", record, IdentifierField);
        finding.message = QStringLiteral("record %1 has the identifier %2 already")
                              .arg(QString::number(seen.value(dmId)), quoted(dmId));
        actions.findings.append(finding);
    }
}

void checkPlaces(Setting &keys)
{
    QHash<QString, int> takers;
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted())
            continue;
        const Key key = provisioning::toKey(record);
        const std::optional<QString> place = placeOf(key);
        if (!place)
            continue;
        const QString identity = identityOf(key, *place);
        if (takers.contains(identity))
            complainOfTaken(keys, record, *place, takers.value(identity));
        else
            takers.insert(identity, record.number);
    }
}

void checkActions(Setting &keys, const QList<const Setting *> &actions)
{
    const QHash<QString, Place> places = placesOf(actions);
    for (const Record &record : std::as_const(keys.records)) {
        const QString &dmId = record.fields.first().text;
        if (!record.isAccepted() || dmId.isEmpty() || places.value(dmId).isAccepted)
            continue;
        Finding finding = complaint(Severity::Error, "key-without-action", record, IdentifierField);
        finding.message = missingAction(
            dmId, places.contains(dmId) ? std::optional<Place>(places.value(dmId)) : std::nullopt);
        keys.findings.append(finding);
    }
}

void checkLimit(Setting &keys, int limit)
{
    const QSet<int> dropped = droppedRecords(keys);
    int count = 0;
    std::optional<Finding> first;
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted() || provisioning::toKey(record).type != KeyType::Set ||
            dropped.contains(record.number))
            continue;
        if (++count > limit && !first)
            first = complaint(Severity::Error, "too-many-keys", record);
    }
    if (!first)
        return;
    first->message = QStringLiteral("%1 of the set, and the limit is %2: the phone refuses this "
                                    "one and those of the set after it")
                         .arg(counted(count, QStringLiteral("key")), QString::number(limit));
    keys.findings.append(*first);
}

void checkLimitText(Setting &limit)
{
    bool isNumber = false;
    limit.text.toInt(&isNumber);
    if (isNumber)
        return;
    Finding finding = complaintAt(limit, Severity::Error, "not-a-number",
                                  {0, static_cast<int>(limit.text.size())});
    finding.shown = finding.place;
    finding.message = limit.text.isEmpty()
                          ? QStringLiteral("the limit is empty and counts as 0, so that no key of "
                                           "the set can be made")
                          : QStringLiteral("the limit %1 is no decimal number of 32 bits and "
                                           "counts as 0, so that no key of the set can be made")
                                .arg(quoted(limit.text));
    limit.findings.append(finding);
}

} // namespace defaults
