#pragma once

#include "records/Action.h"
#include "records/Capability.h"
#include "records/Key.h"

#include <QList>
#include <QString>

#include <optional>

class QSqlQuery;

/// What a writing statement returns. Failures are negative, so that none can pass for an id.
namespace StorageCode {
constexpr int Success = 0;
constexpr int NoSuchRow = -2; ///< an update or deletion by id that matched no row
constexpr int Failed = -3;    ///< the statement could not be prepared or executed; it is in the log
} // namespace StorageCode

/// The outcome of an insertion: the new row's id, which means nothing unless `code` is Success.
struct Insertion
{
    qlonglong id;
    int code;
};

/// The one store of keys and actions: an SQLite file on Qt's default connection.
///
/// A statement that fails is logged and shows in the result as said there; reads that fail return
/// nothing. A file that could not be opened makes every statement fail that way.
class ProgKeysDatabase
{
public:
    /// The shared object. The first call creates it, which opens the connection; whether that
    /// worked shows in the statements.
    static ProgKeysDatabase &instance();

    /// Do both tables answer with the columns they should have? Empty tables do.
    bool checkTables();

    /// Drops both tables and creates them anew with nothing but the reserved action. A step that
    /// fails is logged and the rest still done.
    void resetTables();

    Insertion insertKey(const Key &key);
    int updateKey(const Key &key);
    /// Moves keys, by idKey, in ascending order, and stops at the first failure. An id that is not
    /// there is no failure; an empty map does not touch the database.
    bool updateKeyPositions(const QMapIntInt &positions);
    int deleteKey(qlonglong idKey);
    void deleteProvisionedKeys();

    ListKey key(qlonglong idKey); ///< zero or one
    ListKey keysInContainer(const QString &container);
    ListKey allKeys();
    ListKey keysOfTypeWithAction(int type, qlonglong idAction);
    /// The first one, should there be several.
    std::optional<Key> keyAtPlace(int type, int position, int aom_type, int aom_addr);
    QList<qlonglong> keyIdsWithAction(qlonglong idAction);
    int countKeysOfType(int type); ///< 0 also if the statement failed

    Insertion insertAction(const Action &action);
    int updateAction(const Action &action);
    int deleteAction(qlonglong idAction);

    ListAction action(qlonglong idAction); ///< zero or one
    /// The first one, should there be several.
    std::optional<Action> actionWithDmId(const QString &dmId);
    ListAction allActions();

private:
    ProgKeysDatabase();

    bool openConnection();
    /// Returns whether another process's lock was in the way.
    bool dropTables();
    QSqlQuery runStatement(const QString &sql);
};
