#pragma once

#include <QDBusMetaType>
#include <QVariant>

/// The one place that knows which Qt this is.
namespace zel::qt {

/// The bus signature of a value's type, or null if the bus does not know the type.
inline const char *busSignature(const QVariant &value)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return QDBusMetaType::typeToSignature(value.metaType());
#else
    return QDBusMetaType::typeToSignature(value.userType());
#endif
}

} // namespace zel::qt
