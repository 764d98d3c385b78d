#include "MessageMaker.h"
#include "PrivateLine.h"
#include "Requirement.h"
#include "zelcore/ZELBusNames.h"
#include "zelcore/ZELEventCodec.h"

#include <QDBusMessage>
#include <QSemaphore>

namespace {

constexpr char Path[] = "/peer";

void check(const QDBusMessage &message)
{
    const auto event = zel::decodeEvent(message);
    const bool isEvent = message.signature() == QLatin1String("sa(svb)");
    fuzz::require(event.has_value() == isEvent, "the signature does not decide");
    if (!event)
        return;
    fuzz::require(event->getEvtName() == message.arguments().at(0).toString(), "another name");
    for (const ZELEvent::Argument &argument : event->getArguments()) {
        const QVariant first = event->getArgument(argument.name);
        fuzz::require(argument.value.isValid() && first.isValid(), "an argument without a value");
        static_cast<void>(first.toInt());
        static_cast<void>(first.toDouble());
    }
    static_cast<void>(zel::encodeEvent(QLatin1String(Path), *event));
}

// As a subscription does, of any signature.
class Receiver : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void wait() { m_received.acquire(); }

public slots:
    void receive(const QDBusMessage &message)
    {
        check(message);
        m_received.release();
    }

private:
    QSemaphore m_received;
};

Receiver *receiver = nullptr;

fuzz::PrivateLine &line()
{
    static fuzz::PrivateLine theLine([](QDBusConnection connection, QObject *owner) {
        receiver = new Receiver(owner);
        connection.connect(QString(), QString(), zel::eventsInterface(), zel::eventSignal(),
                           receiver, SLOT(receive(QDBusMessage)));
    });
    return theLine;
}

} // namespace

/// A signal of any signature, with any values that the bus lets pass: it is an event exactly if its
/// signature is that of one, and everything in it can be looked at.
// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::MessageMaker maker(data, size, "sa(svb)");
    DBusMessage *message =
        dbus_message_new_signal(Path, qPrintable(zel::eventsInterface()), "event");
    maker.fill(message);
    line().send(message);
    receiver->wait();
    dbus_message_unref(message);
    return 0;
}

#include "Event.moc"
