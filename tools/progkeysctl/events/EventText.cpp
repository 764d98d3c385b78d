#include "events/EventText.h"

#include "events/BusValues.h"
#include "fields/Fields.h"
#include "output/Listing.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QJsonArray>

namespace events {
namespace {

const QString Name = "name"_s;
const QString Value = "value"_s;
const QString Arguments = "arguments"_s;

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
