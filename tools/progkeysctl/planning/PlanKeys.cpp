#include "planning/PlanKeys.h"

#include "planning/PlanFields.h"
#include "provisioning/ProvisionedRecords.h"

namespace defaults {
namespace {

bool isSameRecord(Key request, const Key &record)
{
    request.idAction = record.idAction;
    return request == record;
}

bool isSamePlace(const Key &left, const Key &right)
{
    return left.type == right.type && left.position == right.position &&
           left.container == right.container && left.aom_type == right.aom_type &&
           left.aom_addr == right.aom_addr;
}

// A new action's number is not known, but it is none that a key has already.
QList<FieldChange> changesTo(const Key &before, const MadeKey &made)
{
    Key after = made.key;
    after.idKey = before.idKey;
    if (made.hasNewAction)
        after.idAction = ~before.idAction;
    QList<FieldChange> changes = changesBetween(before, after);
    for (FieldChange &change : changes) {
        if (made.hasNewAction && change.field == QLatin1String("idAction"))
            change.after = QJsonValue();
    }
    return changes;
}

bool isSameKey(const Key &before, const MadeKey &made)
{
    return changesTo(before, made).isEmpty();
}

template <typename Likeness>
void pairWhere(Plan &plan, Likeness isAlike)
{
    for (RemovedKey &removed : plan.removed) {
        for (int place = 0; place < plan.made.size() && !removed.successor; ++place) {
            MadeKey &made = plan.made[place];
            if (made.predecessor || made.key.dmId != removed.key.dmId ||
                !isAlike(removed.key, made))
                continue;
            removed.successor = place;
            made.predecessor = removed.key;
            made.changes = changesTo(removed.key, made);
        }
    }
}

} // namespace

// The merge asks for the keys in the order of their records and leaves out those without an action.
// One of the same content as the next request has the same identifier, hence an action: it is that
// request.
void planKeys(Plan &plan, const QList<provisioning::Record> &records, const PlanTarget &target)
{
    int next = 0;
    for (const provisioning::Record &record : records) {
        if (!record.isAccepted())
            continue;
        const Key key = provisioning::toKey(record);
        const QList<PlanTarget::KeyRequest> &requests = target.keyRequests();
        if (next == requests.size() || !isSameRecord(requests.at(next).key, key)) {
            plan.dropped.append({key, record.number, std::nullopt});
            continue;
        }
        const PlanTarget::KeyRequest &request = requests.at(next++);
        const bool isNew = target.isNew(request.key.idAction);
        const Key asked = isNew ? key : request.key;
        if (request.isMade)
            plan.made.append({asked, record.number, isNew, std::nullopt, {}});
        else
            plan.dropped.append({asked, record.number, request.setKeys});
    }
}

void pairKeys(Plan &plan, const ListKey &keysNow)
{
    for (const Key &key : keysNow) {
        if (!key.dmId.isEmpty())
            plan.removed.append({key, std::nullopt});
    }
    pairWhere(plan, isSameKey);
    pairWhere(plan,
              [](const Key &before, const MadeKey &made) { return isSamePlace(before, made.key); });
    pairWhere(plan, [](const Key &, const MadeKey &) { return true; });
}

} // namespace defaults
