#include "storage/ProgKeysDatabase.h"
#include "storage/Statement.h"

namespace {

class ActionColumns
{
public:
    explicit ActionColumns(const QSqlRecord &record)
        : m_idAction(record.indexOf(QStringLiteral("idAction"))),
          m_dmId(record.indexOf(QStringLiteral("dmId"))),
          m_type(record.indexOf(QStringLiteral("type"))),
          m_action(record.indexOf(QStringLiteral("action"))),
          m_webAppName(record.indexOf(QStringLiteral("webAppName"))),
          m_arguments(record.indexOf(QStringLiteral("arguments"))),
          m_label(record.indexOf(QStringLiteral("label"))),
          m_shortLabel(record.indexOf(QStringLiteral("shortLabel")))
    {
    }

    Action read(const QSqlQuery &row) const
    {
        Action action;
        action.idAction = row.value(m_idAction).toLongLong();
        action.dmId = row.value(m_dmId).toString();
        action.type = row.value(m_type).toInt();
        action.action = row.value(m_action).toString();
        action.webAppName = row.value(m_webAppName).toString();
        action.arguments = row.value(m_arguments).toString();
        action.label = row.value(m_label).toString();
        action.shortLabel = row.value(m_shortLabel).toString();
        return action;
    }

private:
    int m_idAction;
    int m_dmId;
    int m_type;
    int m_action;
    int m_webAppName;
    int m_arguments;
    int m_label;
    int m_shortLabel;
};

using SelectActions = SelectStatement<Action, ActionColumns>;

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
