#include "events/EventText.h"

#include "events/BusValues.h"
#include "fields/Fields.h"
#include "output/Listing.h"
#include "output/Text.h"

#include <QJsonArray>

namespace events {
namespace {

const QString Name = QStringLiteral("name");
const QString Value = QStringLiteral("value");
const QString Arguments = QStringLiteral("arguments");

QString valueText(const QJsonValue &value);

template <typename Record>
QString recordText(const QJsonObject &object)
{
    QStringList parts;
    for (const fields::Field<Record> &field : fields::of<Record>()) {
        const QJsonValue value = object.value(field.name);
        if (value != QJsonValue(QString()))
            parts.append(field.name + QLatin1Char('=') + valueText(value));
    }
    return QLatin1Char('{') + parts.join(QLatin1Char(' ')) + QLatin1Char('}');
}

QString valueText(const QJsonValue &value)
{
    if (value.isString())
        return QLatin1Char('"') + output::printable(value.toString()) + QLatin1Char('"');
    const QJsonObject object = value.toObject();
    if (object.contains(QStringLiteral("idKey")))
        return recordText<Key>(object);
    if (object.contains(QStringLiteral("idAction")))
        return recordText<Action>(object);
    return output::printable(output::displayText(value));
}

} // namespace

QJsonObject toJson(const ReceivedEvent &received)
{
    // A list, because the name of an argument may occur twice.
    QJsonArray arguments;
    for (const ZELEvent::Argument &argument : received.event.getArguments())
        arguments.append(QJsonObject{{Name, argument.name}, {Value, toJson(argument.value)}});
    return {{QStringLiteral("event"), received.event.getEvtName()},
            {QStringLiteral("module"), received.module},
            {QStringLiteral("sender"), received.sender},
            {Arguments, arguments}};
}

QString argumentsText(const QJsonObject &object)
{
    QStringList parts;
    const QJsonArray arguments = object.value(Arguments).toArray();
    for (const QJsonValue &argument : arguments)
        parts.append(output::printable(argument[Name].toString()) + QLatin1Char('=') +
                     valueText(argument[Value]));
    return parts.join(QLatin1Char(' '));
}

} // namespace events
