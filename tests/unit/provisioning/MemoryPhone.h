#pragma once

#include "provisioning/DefaultsMerge.h"

#include <QMap>
#include <QStringList>

#include <optional>

namespace unit {

/// A phone without a database: the service's rules for its two tables, in memory. It writes each
/// call, and each event that the service would send, to the log, so that they stand there in their
/// order among the lines of the merge itself.
class MemoryPhone : public provisioning::MergeTarget
{
public:
    /// Rows as they are, ids included; the next ids come after the greatest so far.
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
