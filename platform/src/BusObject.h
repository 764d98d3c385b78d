#pragma once

#include <QDBusContext>
#include <QDBusError>
#include <QObject>
#include <QString>

class QDBusAbstractAdaptor;

namespace zel {

/// The object at a path on the bus, which owns the adaptors of its interfaces. Only this object,
/// but not the adaptors, has access to the current call.
class BusObject : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Publishes the adaptor's operations at this object. The parent of the adaptor does not
    /// change.
    ///
    /// If an operation throws a ZELException pointer, this object logs and deletes it, and replies
    /// with an error. While the process is ending, it refuses waiting calls.
    void publish(QDBusAbstractAdaptor *adaptor);

    /// Replies to the current call with an error instead of the result.
    void answerWithError(const QString &errorName, const QString &message);
    void answerWithError(QDBusError::ErrorType error, const QString &message);
};

} // namespace zel
