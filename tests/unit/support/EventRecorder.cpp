#include "support/EventRecorder.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QtTest>

#include <utility>

namespace unit {
namespace {

QString eventsInterface()
{
    return QStringLiteral("com.velmora.Tessaro.ZELEvents");
}

QString fenceMember()
{
    return QStringLiteral("fence");
}

ZELEvent decode(const QDBusMessage &message)
{
    ZELEvent event;
    event.setEvtName(message.arguments().value(0).toString());
    const auto in = message.arguments().value(1).value<QDBusArgument>();
    in.beginArray();
    while (!in.atEnd()) {
        QString name;
        QDBusVariant value;
        bool flag = false;
        in.beginStructure();
        in >> name >> value >> flag;
        in.endStructure();
        event.addArgument(value.variant(), name, flag);
    }
    in.endArray();
    return event;
}

} // namespace

EventRecorder::EventRecorder()
{
    m_client.connection().connect(QString(), QString(), eventsInterface(), QString(), this,
                                  SLOT(receive(QDBusMessage)));
    m_client.settle();
}

QList<ZELEvent> EventRecorder::take()
{
    waitForFence();
    m_taken = m_received;
    m_received.clear();
    QList<ZELEvent> events;
    for (const QDBusMessage &message : std::as_const(m_taken))
        events.append(decode(message));
    return events;
}

QStringList EventRecorder::takeNames()
{
    QStringList names;
    const QList<ZELEvent> events = take();
    for (const ZELEvent &event : events)
        names.append(event.getEvtName());
    return names;
}

QList<QDBusMessage> EventRecorder::messages() const
{
    return m_taken;
}

void EventRecorder::receive(const QDBusMessage &message)
{
    if (message.member() == fenceMember())
        m_fenceSeen = true;
    else
        m_received.append(message);
}

// The bus keeps the order of one sender's messages: when the fence is here, all is here.
void EventRecorder::waitForFence()
{
    m_fenceSeen = false;
    QDBusConnection::systemBus().send(
        QDBusMessage::createSignal(QStringLiteral("/unit"), eventsInterface(), fenceMember()));
    QVERIFY2(QTest::qWaitFor([this] { return m_fenceSeen; }, 10000),
             "no event comes back from the bus");
}

void sendSignal(const QDBusConnection &connection, const QList<QVariant> &arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/unit"), eventsInterface(),
                                                     QStringLiteral("event"));
    signal.setArguments(arguments);
    QVERIFY(connection.send(signal));
}

QStringList describe(const ZELEvent &event)
{
    QStringList lines{event.getEvtName()};
    for (const ZELEvent::Argument &argument : event.getArguments())
        lines.append(QStringLiteral("%1: %2 %3%4")
                         .arg(argument.name, QLatin1String(argument.value.typeName()),
                              argument.value.toString(),
                              argument.flag ? QString() : QStringLiteral(" without flag")));
    return lines;
}

} // namespace unit
