#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QStringList>

namespace unit {

/// A method as a text: "access kind type name(types) names".
inline QString describe(const QMetaMethod &method)
{
    static const char *const accesses[] = {"private", "protected", "public"};
    static const char *const kinds[] = {"method", "signal", "slot", "constructor"};
    const QString names = QString::fromLatin1(method.parameterNames().join(", "));
    return QStringLiteral("%1 %2 %3 %4")
               .arg(QLatin1String(accesses[method.access()]),
                    QLatin1String(kinds[method.methodType()]), QLatin1String(method.typeName()),
                    QString::fromLatin1(method.methodSignature())) +
           (names.isEmpty() ? QString() : QLatin1Char(' ') + names);
}

/// The methods that the class itself declares, in index order.
inline QStringList ownMethods(const QMetaObject &type)
{
    QStringList texts;
    for (int index = type.methodOffset(); index < type.methodCount(); ++index)
        texts.append(describe(type.method(index)));
    return texts;
}

/// The class infos that the class itself declares, in order.
inline QStringList ownClassInfoNames(const QMetaObject &type)
{
    QStringList names;
    for (int index = type.classInfoOffset(); index < type.classInfoCount(); ++index)
        names.append(QLatin1String(type.classInfo(index).name()));
    return names;
}

inline QString classInfo(const QMetaObject &type, const char *name)
{
    return QString::fromUtf8(type.classInfo(type.indexOfClassInfo(name)).value());
}

} // namespace unit
