#include "support/PeerModule.h"

#include <QDBusVirtualObject>
#include <QMutex>
#include <QMutexLocker>

#include <utility>

namespace unit {

class PeerModule::Object : public QDBusVirtualObject
{
public:
    explicit Object(const Answer &answer) : m_answer(answer) {}

    QString introspect(const QString & /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        {
            const QMutexLocker lock(&m_mutex);
            m_calls.append(message);
        }
        return connection.send(m_answer(message));
    }

    QList<QDBusMessage> takeCalls()
    {
        const QMutexLocker lock(&m_mutex);
        return std::exchange(m_calls, {});
    }

private:
    const Answer m_answer;
    QMutex m_mutex;
    QList<QDBusMessage> m_calls;
};

PeerModule::PeerModule(const QString &moduleName, const Answer &answer)
    : m_serviceName(QStringLiteral("com.velmora.Tessaro.") + moduleName),
      m_object(std::make_unique<Object>(answer))
{
    m_object->moveToThread(&m_thread);
    m_thread.start();
    const QString path = QStringLiteral("/com/velmora/Tessaro/") + moduleName;
    if (!m_client.connection().registerVirtualObject(path, m_object.get()) ||
        !m_client.connection().registerService(m_serviceName))
        qFatal("Cannot put the peer on the bus");
}

PeerModule::~PeerModule()
{
    m_client.connection().unregisterService(m_serviceName);
    m_thread.quit();
    m_thread.wait();
}

QList<QDBusMessage> PeerModule::takeCalls()
{
    return m_object->takeCalls();
}

PeerModule::Answer replyWith(const QList<QVariant> &values)
{
    return [values](const QDBusMessage &call) { return call.createReply(values); };
}

PeerModule::Answer echo()
{
    return [](const QDBusMessage &call) { return call.createReply(call.arguments()); };
}

PeerModule::Answer replyWithError(const QString &name, const QString &message)
{
    return
        [name, message](const QDBusMessage &call) { return call.createErrorReply(name, message); };
}

} // namespace unit
