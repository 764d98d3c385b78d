#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QMap>
#include <QStringList>

#include <optional>

namespace unit {

/// The two tables of the service and their rules, in memory. It logs each call and each event that
/// the service would send, in order with the lines of the merge.
class MemoryPhone : public provisioning::MergeTarget
{
public:
    /// Stores a row with its id. New ids follow the largest id.
    void put(const Action &action);
    void put(const Key &key);

    std::optional<int> keyLimit;     ///< the maximum number of keys of type 0
    QString labelThatCannotBeStored; ///< if not empty, adding actions with this label fails

    ListAction allActions() override;
    std::optional<Action> actionWithDmId(const QString &dmId) override;
    void addAction(const Action &action) override;
    void modifyAction(const Action &action) override;
    void deleteAction(qlonglong idAction) override;
    void deleteProvisionedKeys() override;
    void createKey(const Key &key) override;

    ListAction actions() const { return m_actions.values(); }
    ListKey keys() const { return m_keys.values(); }
    /// The rows of both tables as text, in the order of their ids.
    QStringList rows() const;

private:
    bool hasRoomFor(const Key &key) const;
    void deleteKeysOf(qlonglong idAction);

    // By id, which is the order of the rows in the database.
    QMap<qlonglong, Action> m_actions;
    QMap<qlonglong, Key> m_keys;
    qlonglong m_lastAction = 0;
    qlonglong m_lastKey = 0;
};

} // namespace unit
