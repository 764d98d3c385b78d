#pragma once

#include <QDBusAbstractAdaptor>

namespace zel {

class BusObject;

/// Stands in for an adaptor on the bus: shows the adaptor's meta-object, passes every call on to
/// it, and stops a ZELException pointer that comes back. Once the process is ending it refuses the
/// calls that still wait.
///
/// The exception must not cross the bus library. Unwinding would skip its clean-up: its record of
/// the current call would go on pointing at the dead one, and the caller would be told that the
/// object does not exist.
class CallGuard : public QDBusAbstractAdaptor
{
public:
    CallGuard(QDBusAbstractAdaptor &adaptor, BusObject &object);

    const QMetaObject *metaObject() const override;
    int qt_metacall(QMetaObject::Call call, int id, void **arguments) override;

private:
    QDBusAbstractAdaptor &m_adaptor;
    BusObject &m_object;
};

} // namespace zel
