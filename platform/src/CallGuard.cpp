#include "CallGuard.h"

#include "BusObject.h"
#include "zelcore/ZELApplication.h"
#include "zelcore/ZELBusNames.h"
#include "zelcore/ZELException.h"

namespace zel {
namespace {

// A look for signals at every call would show in every call.
constexpr std::chrono::milliseconds AgeOfNews(10);

} // namespace

CallGuard::CallGuard(QDBusAbstractAdaptor &adaptor, BusObject &object)
    : QDBusAbstractAdaptor(&object), m_adaptor(adaptor), m_object(object)
{
}

const QMetaObject *CallGuard::metaObject() const
{
    return m_adaptor.metaObject();
}

int CallGuard::qt_metacall(QMetaObject::Call call, int id, void **arguments)
{
    constexpr int handled = -1;
    if (call == QMetaObject::InvokeMetaMethod && ZELApplication::isEnding(AgeOfNews)) {
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

} // namespace zel
