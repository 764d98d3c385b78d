#pragma once

#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QString>

class QDBusAbstractAdaptor;

namespace zel {

/// The object at a path on the bus, which owns the adaptors of its interfaces. The bus library
/// tells it, and not the adaptors, which call is being answered.
class BusObject : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Publishes the adaptor's operations at this object. The adaptor keeps its parent.
    ///
    /// A ZELException pointer that leaves an operation is logged, deleted and answered with an
    /// error. When the process is ending, calls that still wait are refused.
    void publish(QDBusAbstractAdaptor *adaptor);

    /// Answers the current call with an error instead of its normal reply.
    void answerWithError(const QString &errorName, const QString &message);
    void answerWithError(QDBusError::ErrorType error, const QString &message);
};

} // namespace zel
