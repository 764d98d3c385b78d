#include "storage/ProgKeysDatabase.h"
#include "storage/Statement.h"

namespace {

using SelectActions = SelectStatement<Action>;

} // namespace

Insertion ProgKeysDatabase::insertAction(const Action &action)
{
    static Statement statement("INSERT INTO ACTION (type, action, webAppName, arguments, label, "
                               "shortLabel, dmId) VALUES (?, ?, ?, ?, ?, ?, ?)");
    return statement.insert({action.type, stored(action.action), stored(action.webAppName),
                             stored(action.arguments), stored(action.label),
                             stored(action.shortLabel), stored(action.dmId)});
}

int ProgKeysDatabase::updateAction(const Action &action)
{
    static Statement statement("UPDATE ACTION SET type=?, action=?, webAppName=?, arguments=?, "
                               "label=?, shortLabel=?, dmId=? WHERE idAction=?");
    return statement.change({action.type, stored(action.action), stored(action.webAppName),
                             stored(action.arguments), stored(action.label),
                             stored(action.shortLabel), stored(action.dmId), action.idAction});
}

int ProgKeysDatabase::deleteAction(qlonglong idAction)
{
    static Statement statement("DELETE FROM ACTION WHERE idAction=?");
    return statement.change({idAction});
}

ListAction ProgKeysDatabase::action(qlonglong idAction)
{
    static SelectActions statement(
        "SELECT idAction, DMID, type, action, webAppName, arguments, label, "
        "shortLabel, dmId FROM ACTION WHERE idAction=?");
    return zeroOrOne(statement.readFirst({idAction}));
}

std::optional<Action> ProgKeysDatabase::actionWithDmId(const QString &dmId)
{
    static SelectActions statement(
        "SELECT idAction, DMID, type, action, webAppName, arguments, label, "
        "shortLabel FROM ACTION WHERE DMID=?");
    return statement.readFirst({stored(dmId)});
}

ListAction ProgKeysDatabase::allActions()
{
    static SelectActions statement("SELECT idAction, type, action, webAppName, arguments, label, "
                                   "shortLabel, dmId FROM ACTION");
    return statement.read({});
}
