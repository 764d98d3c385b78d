#pragma once

#include "records/Action.h"
#include "records/Capability.h"
#include "records/Key.h"
#include "storage/Insertion.h"

#include <QList>
#include <QString>

#include <initializer_list>
#include <optional>

class QSqlQuery;
class ZELModule;

/// The keys and actions, in an SQLite file on Qt's default connection.
///
/// A failed statement is logged. Writes then return ResultCode::Failed, and reads return nothing.
/// If the file could not be opened, all statements fail in this way.
class ProgKeysDatabase
{
public:
    /// The single instance. The first call creates it and opens the file in the directory of that
    /// module. Later calls ignore the module.
    static ProgKeysDatabase &instance(const ZELModule &module);

    /// Whether both tables exist with all their columns. Empty tables pass.
    bool checkTables();

    /// Drops both tables and creates them again, with only the reserved action. A failed step is
    /// logged, and the next steps still run.
    void resetTables();

    Insertion insertKey(const Key &key);
    int updateKey(const Key &key);
    /// Sets the positions by idKey, in ascending order, and stops at the first failure. An unknown
    /// id is not a failure. With an empty map, it does not use the database.
    bool updateKeyPositions(const QMapIntInt &positions);
    int deleteKey(qlonglong idKey);
    void deleteProvisionedKeys();

    ListKey key(qlonglong idKey); ///< at most one
    ListKey keysInContainer(const QString &container);
    ListKey allKeys();
    ListKey keysOfTypeWithAction(int type, qlonglong idAction);
    /// The first match.
    std::optional<Key> keyAtPlace(int type, int position, int aom_type, int aom_addr);
    QList<qlonglong> keyIdsWithAction(qlonglong idAction);
    int countKeysOfType(int type); ///< also 0 if the statement fails

    Insertion insertAction(const Action &action);
    int updateAction(const Action &action);
    int deleteAction(qlonglong idAction);

    ListAction action(qlonglong idAction); ///< at most one
    /// The first match.
    std::optional<Action> actionWithDmId(const QString &dmId);
    ListAction allActions();

private:
    explicit ProgKeysDatabase(const ZELModule &module);

    static bool openConnection(const ZELModule &module);
    /// Both run all steps, and return whether one failed because of a lock of another process.
    bool dropTables();
    bool runSteps(std::initializer_list<const char *> steps);
    QSqlQuery runStatement(const QString &sql);
};
