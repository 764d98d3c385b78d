#pragma once

#include "records/Action.h"
#include "records/Key.h"

#include <QtTest>

/// Records whose fields have different values, so that tests detect swapped fields, and the text of
/// a record in test output.

inline QString describe(const Key &key)
{
    return QStringLiteral("Key(%1, '%2', '%3', %4, %5, '%6', %7, %8, %9)")
        .arg(QString::number(key.idKey), key.dmId, key.container, QString::number(key.idAction),
             QString::number(key.position), key.icon, QString::number(key.type),
             QString::number(key.aom_type), QString::number(key.aom_addr));
}

inline QString describe(const Action &action)
{
    return QStringLiteral("Action(%1, '%2', %3, '%4', '%5', '%6', '%7', '%8')")
        .arg(QString::number(action.idAction), action.dmId, QString::number(action.type),
             action.action, action.webAppName, action.arguments, action.label, action.shortLabel);
}

inline char *toString(const Key &key)
{
    return QTest::toString(describe(key));
}

inline char *toString(const Action &action)
{
    return QTest::toString(describe(action));
}

namespace unit {

inline Key sampleKey()
{
    Key key;
    key.idKey = 11;
    key.dmId = QStringLiteral("dm");
    key.container = QStringLiteral("home");
    key.idAction = 22;
    key.position = 33;
    key.icon = QStringLiteral("star");
    key.type = 44;
    key.aom_type = 55;
    key.aom_addr = 66;
    return key;
}

inline Action sampleAction()
{
    Action action;
    action.idAction = 11;
    action.dmId = QStringLiteral("dm");
    action.type = 22;
    action.action = QStringLiteral("call");
    action.webAppName = QStringLiteral("portal");
    action.arguments = QStringLiteral("501");
    action.label = QStringLiteral("Reception");
    action.shortLabel = QStringLiteral("Rec");
    return action;
}

} // namespace unit
