#include "events/BusValues.h"

#include "fields/Fields.h"
#include "output/Listing.h"
#include "text/Format.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QJsonArray>

#include <limits>

namespace events {
namespace {

QJsonArray itemsToJson(const QDBusArgument &argument)
{
    QJsonArray items;
    while (!argument.atEnd())
        items.append(toJson(argument.asVariant()));
    return items;
}

QJsonArray arrayToJson(const QDBusArgument &argument)
{
    argument.beginArray();
    QJsonArray items = itemsToJson(argument);
    argument.endArray();
    return items;
}

QJsonArray structureToJson(const QDBusArgument &argument)
{
    argument.beginStructure();
    QJsonArray items = itemsToJson(argument);
    argument.endStructure();
    return items;
}

QJsonObject mapToJson(const QDBusArgument &argument)
{
    QJsonObject object;
    argument.beginMap();
    while (!argument.atEnd()) {
        argument.beginMapEntry();
        const QVariant name = argument.asVariant();
        object.insert(name.toString(), toJson(argument.asVariant()));
        argument.endMapEntry();
    }
    argument.endMap();
    return object;
}

QJsonValue argumentToJson(const QDBusArgument &argument)
{
    const QString signature = argument.currentSignature();
    if (signature == "(xsxsisiii)"_s)
        return fields::toJson(qdbus_cast<Key>(argument));
    if (signature == "(xsisssss)"_s)
        return fields::toJson(qdbus_cast<Action>(argument));
    switch (argument.currentType()) {
    case QDBusArgument::ArrayType:
        return arrayToJson(argument);
    case QDBusArgument::StructureType:
        return structureToJson(argument);
    case QDBusArgument::MapType:
        return mapToJson(argument);
    case QDBusArgument::BasicType:
    case QDBusArgument::VariantType:
        return toJson(argument.asVariant());
    default:
        return {};
    }
}

QJsonValue wideToJson(qulonglong number)
{
    if (number > static_cast<qulonglong>(std::numeric_limits<qint64>::max()))
        return QString::number(number);
    return output::jsonNumber(static_cast<qlonglong>(number));
}

} // namespace

QJsonValue toJson(const QVariant &value)
{
    const int type = value.userType();
    if (type == qMetaTypeId<QDBusArgument>())
        return argumentToJson(value.value<QDBusArgument>());
    if (type == qMetaTypeId<QDBusVariant>())
        return toJson(value.value<QDBusVariant>().variant());
    if (type == qMetaTypeId<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    if (type == qMetaTypeId<QDBusSignature>())
        return value.value<QDBusSignature>().signature();
    if (type == qMetaTypeId<QDBusUnixFileDescriptor>())
        return "file descriptor"_s;
    if (type == QMetaType::UChar || type == QMetaType::Short || type == QMetaType::UShort)
        return value.toInt();
    if (type == QMetaType::LongLong)
        return output::jsonNumber(value.toLongLong());
    if (type == QMetaType::ULongLong)
        return wideToJson(value.toULongLong());
    if (type == QMetaType::QByteArray)
        return QString::fromLatin1(value.toByteArray().toHex());
    return QJsonValue::fromVariant(value);
}

} // namespace events
