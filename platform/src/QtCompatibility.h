#pragma once

#include <QDBusMetaType>
#include <QVariant>

/// The only code that depends on the major version of Qt.
namespace zel::qt {

/// The bus signature of a value's type, or null if the type has none.
inline const char *busSignature(const QVariant &value)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    return QDBusMetaType::typeToSignature(value.metaType());
#else
    return QDBusMetaType::typeToSignature(value.userType());
#endif
}

} // namespace zel::qt
