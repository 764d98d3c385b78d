#include "events/EventText.h"

#include "fields/Fields.h"
#include "output/Listing.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QJsonArray>

#include <limits>

namespace events {
namespace {

const QString Name = "name"_s;
const QString Value = "value"_s;
const QString Arguments = "arguments"_s;

QJsonValue toJson(const QVariant &value);

QJsonArray itemsToJson(const QDBusArgument &argument)
{
    QJsonArray items;
    while (!argument.atEnd())
        items.append(toJson(argument.asVariant()));
    return items;
}

QJsonObject entriesToJson(const QDBusArgument &argument)
{
    QJsonObject object;
    while (!argument.atEnd()) {
        argument.beginMapEntry();
        const QString name = argument.asVariant().toString();
        object.insert(name, toJson(argument.asVariant()));
        argument.endMapEntry();
    }
    return object;
}

QJsonValue argumentToJson(const QDBusArgument &argument)
{
    const QString signature = argument.currentSignature();
    if (signature == "(xsxsisiii)"_s)
        return fields::toJson(qdbus_cast<Key>(argument));
    if (signature == "(xsisssss)"_s)
        return fields::toJson(qdbus_cast<Action>(argument));
    QJsonValue value;
    switch (argument.currentType()) {
    case QDBusArgument::ArrayType:
        argument.beginArray();
        value = itemsToJson(argument);
        argument.endArray();
        break;
    case QDBusArgument::StructureType:
        argument.beginStructure();
        value = itemsToJson(argument);
        argument.endStructure();
        break;
    case QDBusArgument::MapType:
        argument.beginMap();
        value = entriesToJson(argument);
        argument.endMap();
        break;
    default:
        value = toJson(argument.asVariant());
    }
    return value;
}

// A key or an action is an object of its fields, another structure or list an array, a dictionary
// an object.
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
    if (type == QMetaType::QByteArray)
        return QString::fromLatin1(value.toByteArray().toHex());
    if (type == QMetaType::UChar || type == QMetaType::Short || type == QMetaType::UShort)
        return value.toInt();
    if (type == QMetaType::ULongLong && value.toULongLong() > std::numeric_limits<qint64>::max())
        return value.toString();
    if (type == QMetaType::LongLong || type == QMetaType::ULongLong)
        return output::jsonNumber(value.toLongLong());
    return QJsonValue::fromVariant(value);
}

QString valueText(const QJsonValue &value);

QString recordText(const QJsonObject &object, const QList<fields::Field> &fields)
{
    QStringList parts;
    for (const fields::Field &field : fields) {
        const QJsonValue value = object.value(field.name);
        if (value != QJsonValue(QString()))
            parts.append(field.name + QLatin1Char('=') + valueText(value));
    }
    return QLatin1Char('{') + parts.join(QLatin1Char(' ')) + QLatin1Char('}');
}

QString valueText(const QJsonValue &value)
{
    if (value.isString())
        return QLatin1Char('"') + text::printable(value.toString()) + QLatin1Char('"');
    const QJsonObject object = value.toObject();
    if (object.contains("idKey"_s))
        return recordText(object, fields::of<Key>());
    if (object.contains("idAction"_s))
        return recordText(object, fields::of<Action>());
    return text::printable(output::displayText(value));
}

} // namespace

QJsonObject toJson(const ReceivedEvent &received)
{
    // A list, because the name of an argument may occur twice.
    QJsonArray arguments;
    for (const ZELEvent::Argument &argument : received.event.getArguments())
        arguments.append(QJsonObject{{Name, argument.name}, {Value, toJson(argument.value)}});
    return {{"event"_s, received.event.getEvtName()},
            {"module"_s, received.module},
            {"sender"_s, received.sender},
            {Arguments, arguments}};
}

QString argumentsText(const QJsonObject &object)
{
    QStringList parts;
    const QJsonArray arguments = object.value(Arguments).toArray();
    for (const QJsonValue &argument : arguments)
        parts.append(text::printable(argument[Name].toString()) + QLatin1Char('=') +
                     valueText(argument[Value]));
    return parts.join(QLatin1Char(' '));
}

} // namespace events
