#include "BusObject.h"

#include "CallGuard.h"

#include <QDBusMessage>

namespace zel {

void BusObject::publish(QDBusAbstractAdaptor *adaptor)
{
    // Owned by its parent, as the bus library requires of an adaptor.
    new CallGuard(*adaptor, *this);
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
