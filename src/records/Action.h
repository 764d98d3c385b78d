#pragma once

#include "records/Fields.h"

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

/// The empty action. It is created with the tables. It can be modified, but not deleted.
constexpr qlonglong ReservedActionId = -1;

/// The action that a key triggers, `(xsisssss)` on the bus.
struct Action
{
    qlonglong idAction = -1; ///< assigned by the database, starting at 1; -1: the reserved action
    QString dmId;            ///< the provisioned entry; empty if a user created the action
    int type = 0;
    QString action;
    QString webAppName; ///< the web application that the action uses, if any
    QString arguments;
    QString label;
    QString shortLabel; ///< the label that an add-on module shows

    /// In the order of the bus signature.
    static constexpr auto fields()
    {
        return std::make_tuple(
            Field{"idAction", &Action::idAction}, Field{"dmId", &Action::dmId},
            Field{"type", &Action::type}, Field{"action", &Action::action},
            Field{"webAppName", &Action::webAppName}, Field{"arguments", &Action::arguments},
            Field{"label", &Action::label}, Field{"shortLabel", &Action::shortLabel});
    }
};

/// `a(xsisssss)` on the bus.
using ListAction = QList<Action>;

Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(ListAction)

bool operator==(const Action &left, const Action &right);
QDBusArgument &operator<<(QDBusArgument &argument, const Action &action);
const QDBusArgument &operator>>(const QDBusArgument &argument, Action &action);

/// Registers `Action` and `ListAction` by name with the meta-type system and the bus library. Call
/// this before a call or an event uses these types. Further calls have no effect.
void registerDBusAction();
