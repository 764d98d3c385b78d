#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QMap>
#include <QStringList>

#include <optional>

namespace unit {

/// The service's rules for its two tables, in memory and without a database. It logs each call and
/// each event that the service would send, so that they appear in order among the lines of the
/// merge.
class MemoryPhone : public provisioning::MergeTarget
{
public:
    /// Stores a row with its id. The next ids follow the greatest one.
    void put(const Action &action);
    void put(const Key &key);

    std::optional<int> keyLimit;     ///< how many keys of type 0 there may be
    QString labelThatCannotBeStored; ///< insertions of such actions fail, if not empty

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
    bool isRoomFor(const Key &key) const;
    void deleteKeysOf(qlonglong idAction);

    // By id: the order in which the database gives the rows of a table.
    QMap<qlonglong, Action> m_actions;
    QMap<qlonglong, Key> m_keys;
    qlonglong m_lastAction = 0;
    qlonglong m_lastKey = 0;
};

} // namespace unit
