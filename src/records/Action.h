#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

/// The action that does nothing: created with the tables, may be changed, is never deleted.
constexpr qlonglong ReservedActionId = -1;

/// What a key does when pressed, `(xsisssss)` on the bus in the order of the fields.
struct Action
{
    qlonglong idAction = -1; ///< assigned by the database, from 1 upward; -1 is the reserved action
    QString dmId;            ///< provisioned entry it comes from; empty: made by a user
    int type = 0;
    QString action;
    QString webAppName; ///< the web application it addresses, if any
    QString arguments;
    QString label;
    QString shortLabel; ///< what an add-on module shows beside its keys
};

/// `a(xsisssss)` on the bus.
using ListAction = QList<Action>;

Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(ListAction)

bool operator==(const Action &left, const Action &right);
QDBusArgument &operator<<(QDBusArgument &argument, const Action &action);
const QDBusArgument &operator>>(const QDBusArgument &argument, Action &action);

/// Makes `Action` and `ListAction` known by name to the meta-type system and to the bus. To be
/// called before any call or event carries them; calling it again changes nothing.
void registerDBusAction();
