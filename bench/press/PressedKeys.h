#pragma once

#include "Answer.h"

#include <QDBusMessage>
#include <QObject>
#include <QSqlQuery>

/// Answers a press as the service does, with its two statements, prepared once.
class PressedKeys : public QObject
{
    Q_OBJECT

public:
    PressedKeys();

public slots:
    void answer(const QDBusMessage &press);

private:
    Key keyAt(int position, int aom_type, int aom_addr);
    Action action(qlonglong idAction);

    QSqlQuery m_key;
    QSqlQuery m_action;
};
