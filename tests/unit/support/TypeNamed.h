#pragma once

#include <QMetaType>

namespace unit {

QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED // the one way to ask that both Qt 5 and Qt 6 offer
                              /// The id of a type by the name it was registered under; 0 if nothing
                              /// was.
    inline int
    typeNamed(const char *name)
{
    return QMetaType::type(name);
}
QT_WARNING_POP

} // namespace unit
