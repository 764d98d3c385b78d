#include "provisioning/PlainMerge.h"

#include "provisioning/PlainText.h"

#include <zelcore/ZELLogger.h>

namespace plain {
namespace {

class Merge
{
public:
    explicit Merge(provisioning::MergeTarget &target) : m_target(target) {}

    void run(const QString &actionsText, const QString &keysText)
    {
        const QList<Record> actions = parseText(actionsText);
        const QList<Record> keys = parseText(keysText);
        debug(QStringLiteral("Processing %1 dm actions and %2 dm keys")
                  .arg(actions.size())
                  .arg(keys.size()));
        readActions(actions);
        matchActions();
        addActions();
        readKeys(keys);
        m_target.deleteProvisionedKeys();
        createKeys();
    }

private:
    static void debug(const QString &text) { logger().debug(text); }
    static void warning(const QString &text) { logger().warning(text); }

    void readActions(const QList<Record> &records)
    {
        for (const Record &record : records) {
            if (record.fields.size() != 7) {
                warning(QStringLiteral("Skipping invalid dm action: ") + record.hidden);
                continue;
            }
            Action action;
            action.idAction = -1;
            action.dmId = record.fields.at(0);
            action.type = record.fields.at(1).toInt();
            action.action = record.fields.at(2);
            action.webAppName = record.fields.at(3);
            action.arguments = record.fields.at(4);
            action.label = record.fields.at(5);
            action.shortLabel = record.fields.at(6);
            m_actions.append(action);
            debug(QStringLiteral("added action of dmId ") + action.dmId);
        }
    }

    void matchActions()
    {
        const ListAction stored = m_target.allActions();
        debug(QStringLiteral("found %1 db actions").arg(stored.size()));
        for (const Action &action : stored) {
            if (!updateFromEachMatch(action) && !action.dmId.isEmpty()) {
                debug(QStringLiteral("action of id ") + action.dmId +
                      QStringLiteral(" not found, deleting"));
                m_target.deleteAction(action.idAction);
            }
        }
    }

    bool updateFromEachMatch(const Action &stored)
    {
        bool found = false;
        for (Action &provisioned : m_actions) {
            if (provisioned.dmId != stored.dmId)
                continue;
            debug(QStringLiteral("action of id ") + provisioned.dmId +
                  QStringLiteral(" found, modifying"));
            provisioned.idAction = stored.idAction;
            m_target.modifyAction(provisioned);
            found = true;
        }
        return found;
    }

    void addActions()
    {
        for (const Action &action : std::as_const(m_actions)) {
            if (action.idAction != -1)
                continue;
            m_target.addAction(action);
            debug(QStringLiteral("action of id ") + action.dmId + QStringLiteral(" added"));
        }
    }

    void readKeys(const QList<Record> &records)
    {
        for (const Record &record : records) {
            if (record.fields.size() != 7) {
                warning(QStringLiteral("Skipping invalid dm key: ") + record.hidden);
                continue;
            }
            Key key;
            key.idKey = -1;
            key.idAction = -1;
            key.dmId = record.fields.at(0);
            key.container = record.fields.at(1);
            key.position = record.fields.at(2).toInt();
            key.icon = record.fields.at(3);
            key.type = record.fields.at(4).toInt();
            key.aom_type = record.fields.at(5).toInt();
            key.aom_addr = record.fields.at(6).toInt();
            m_keys.append(key);
        }
    }

    void createKeys()
    {
        for (Key key : std::as_const(m_keys)) {
            const std::optional<Action> action = m_target.actionWithDmId(key.dmId);
            if (!action)
                continue;
            key.idAction = action->idAction;
            m_target.createKey(key);
        }
    }

    provisioning::MergeTarget &m_target;
    ListAction m_actions;
    ListKey m_keys;
};

} // namespace

void mergeDefaults(provisioning::MergeTarget &target, const QString &actionsText,
                   const QString &keysText)
{
    Merge(target).run(actionsText, keysText);
}

} // namespace plain
