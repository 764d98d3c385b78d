#pragma once

#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QString>

class QDBusAbstractAdaptor;

namespace zel {

/// What stands at a module's object path: a parent for the guarded adaptors, and the one object
/// to which the bus library tells which call is being answered.
class BusObject : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Publishes the adaptor's operations here. The adaptor stays where it is and whose it is.
    void publish(QDBusAbstractAdaptor *adaptor);

    /// Answers the call that is being delivered with an error, in place of its normal reply.
    void answerWithError(const QString &errorName, const QString &message);
    void answerWithError(QDBusError::ErrorType error, const QString &message);
};

} // namespace zel
