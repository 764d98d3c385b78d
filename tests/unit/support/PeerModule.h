#pragma once

#include "support/BusClient.h"

#include <QDBusMessage>
#include <QList>
#include <QThread>

#include <functional>
#include <memory>

namespace unit {

/// Another module on the bus. It answers every call from a thread of its own, because a caller in
/// this process is blocked meanwhile.
class PeerModule
{
public:
    /// Makes the answer to a call; runs on the peer's thread.
    using Answer = std::function<QDBusMessage(const QDBusMessage &call)>;

    PeerModule(const QString &moduleName, const Answer &answer);
    ~PeerModule();
    PeerModule(const PeerModule &) = delete;
    PeerModule &operator=(const PeerModule &) = delete;

    /// The calls that came since the last time.
    QList<QDBusMessage> takeCalls();

private:
    class Object;

    BusClient m_client;
    QString m_serviceName;
    QThread m_thread;
    std::unique_ptr<Object> m_object;
};

/// Answers with these values.
PeerModule::Answer replyWith(const QList<QVariant> &values);
/// Answers with what the call brought.
PeerModule::Answer echo();
PeerModule::Answer replyWithError(const QString &name, const QString &message);

} // namespace unit
