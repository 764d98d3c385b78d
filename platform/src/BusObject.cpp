#include "BusObject.h"

#include "zelcore/ZELApplication.h"
#include "zelcore/ZELBusNames.h"
#include "zelcore/ZELException.h"

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>

namespace zel {
namespace {

// The maximum age of the last check for a termination signal. A check at every call would slow down
// the calls.
constexpr std::chrono::milliseconds MaxSignalCheckAge(10);

// A proxy for an adaptor: it has the adaptor's meta-object and forwards all calls.
//
// An exception must not pass through the bus library. The library would not clear its pointer to
// the current call, which would then point to freed memory, and would reply that there is no such
// object.
class CallGuard : public QDBusAbstractAdaptor
{
public:
    CallGuard(QDBusAbstractAdaptor &adaptor, BusObject &object)
        : QDBusAbstractAdaptor(&object), m_adaptor(adaptor), m_object(object)
    {
    }

    const QMetaObject *metaObject() const override { return m_adaptor.metaObject(); }
    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

private:
    QDBusAbstractAdaptor &m_adaptor;
    BusObject &m_object;
};

int CallGuard::qt_metacall(QMetaObject::Call call, int id, void **arguments)
{
    constexpr int handled = -1;
    if (call == QMetaObject::InvokeMetaMethod && ZELApplication::isEnding(MaxSignalCheckAge)) {
        m_object.answerWithError(invocationFailedError(), QStringLiteral("The module is ending"));
        return handled;
    }
    try {
        return m_adaptor.qt_metacall(call, id, arguments);
    } catch (ZELException *exception) {
        m_object.answerWithError(invocationFailedError(), exception->getMessage());
        ZELApplication::dispose(exception);
        return handled;
    }
}

} // namespace

void BusObject::publish(QDBusAbstractAdaptor *adaptor)
{
    new CallGuard(*adaptor, *this); // belongs to this object
}

void BusObject::answerWithError(const QString &errorName, const QString &message)
{
    if (calledFromDBus() && this->message().isReplyRequired())
        sendErrorReply(errorName, message);
}

void BusObject::answerWithError(QDBusError::ErrorType error, const QString &message)
{
    answerWithError(QDBusError::errorString(error), message);
}

} // namespace zel
