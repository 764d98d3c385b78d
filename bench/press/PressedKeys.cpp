#include "PressedKeys.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QSqlDatabase>

#include <array>

namespace {

// The three numbers of a press, in the order in which the driver sends them.
std::array<int, 3> readPress(const QDBusMessage &press)
{
    const auto arguments = press.arguments().at(1).value<QDBusArgument>();
    std::array<int, 3> numbers = {};
    arguments.beginArray();
    for (int &number : numbers) {
        QString name;
        QDBusVariant value;
        bool flag = false;
        arguments.beginStructure();
        arguments >> name >> value >> flag;
        arguments.endStructure();
        number = value.variant().toInt();
    }
    arguments.endArray();
    return numbers;
}

QSqlQuery prepared(const QString &text)
{
    QSqlQuery query(QString(), QSqlDatabase{});
    query.setForwardOnly(true);
    if (!query.prepare(text))
        qFatal("The database has not the tables");
    return query;
}

} // namespace

PressedKeys::PressedKeys()
    : m_key(prepared(QStringLiteral(
          "SELECT idKey, DMID, container, idAction, position, icon, type, aom_type, aom_addr FROM "
          "KEY WHERE type=? and position=? and aom_type=? and aom_addr=?"))),
      m_action(prepared(
          QStringLiteral("SELECT idAction, DMID, type, action, webAppName, arguments, label, "
                         "shortLabel, dmId FROM ACTION WHERE idAction=?")))
{
}

void PressedKeys::answer(const QDBusMessage &press)
{
    const auto [position, aom_type, aom_addr] = readPress(press);
    Answer answer;
    answer.key = keyAt(position, aom_type, aom_addr);
    answer.action = action(answer.key.idAction);
    QDBusMessage event = QDBusMessage::createSignal(
        QStringLiteral("/com/velmora/Tessaro/ZelProgrammableKeys"),
        QStringLiteral("com.velmora.Tessaro.ZELEvents"), QStringLiteral("event"));
    event << QStringLiteral("AOMKEY_PRESS_NTF") << QVariant::fromValue(answer);
    if (!QDBusConnection::systemBus().send(event))
        qFatal("The bus is gone");
}

Key PressedKeys::keyAt(int position, int aom_type, int aom_addr)
{
    int index = 0;
    for (const int value : {KeyType::AddOnModule, position, aom_type, aom_addr})
        m_key.bindValue(index++, value);
    Key key;
    if (m_key.exec() && m_key.next()) {
        key.idKey = m_key.value(0).toLongLong();
        key.dmId = m_key.value(1).toString();
        key.container = m_key.value(2).toString();
        key.idAction = m_key.value(3).toLongLong();
        key.position = m_key.value(4).toInt();
        key.icon = m_key.value(5).toString();
        key.type = m_key.value(6).toInt();
        key.aom_type = m_key.value(7).toInt();
        key.aom_addr = m_key.value(8).toInt();
    }
    m_key.finish();
    return key;
}

Action PressedKeys::action(qlonglong idAction)
{
    m_action.bindValue(0, idAction);
    Action action;
    if (m_action.exec() && m_action.next()) {
        action.idAction = m_action.value(0).toLongLong();
        action.dmId = m_action.value(1).toString();
        action.type = m_action.value(2).toInt();
        action.action = m_action.value(3).toString();
        action.webAppName = m_action.value(4).toString();
        action.arguments = m_action.value(5).toString();
        action.label = m_action.value(6).toString();
        action.shortLabel = m_action.value(7).toString();
    }
    m_action.finish();
    return action;
}
