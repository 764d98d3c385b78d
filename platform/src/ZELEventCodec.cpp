#include "zelcore/ZELEventCodec.h"

#include "QtCompatibility.h"
#include "zelcore/ZELBusNames.h"

#include <QDBusArgument>
#include <QDBusVariant>

#include <algorithm>

using Arguments = QVector<ZELEvent::Argument>;
Q_DECLARE_METATYPE(Arguments)

QDBusArgument &operator<<(QDBusArgument &out, const ZELEvent::Argument &argument)
{
    out.beginStructure();
    out << argument.name << QDBusVariant(argument.value) << argument.flag;
    out.endStructure();
    return out;
}

const QDBusArgument &operator>>(const QDBusArgument &in, ZELEvent::Argument &argument)
{
    QDBusVariant value;
    in.beginStructure();
    in >> argument.name >> value >> argument.flag;
    in.endStructure();
    argument.value = value.variant();
    return in;
}

namespace zel {
namespace {

bool isBusType(const QVariant &value);

template <typename Values>
bool areBusTypes(const Values &values)
{
    return std::all_of(values.cbegin(), values.cend(), isBusType);
}

// Check this before marshalling an event. The bus library would omit a value of another type, and
// then abort the process because of the incomplete message.
bool isBusType(const QVariant &value)
{
    if (!value.isValid() || qt::busSignature(value) == nullptr)
        return false;
    if (value.userType() == qMetaTypeId<QVariantList>())
        return areBusTypes(value.toList());
    if (value.userType() == qMetaTypeId<QVariantMap>())
        return areBusTypes(value.toMap());
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return isBusType(value.value<QDBusVariant>().variant());
    return true;
}

void registerArguments()
{
    [[maybe_unused]] static const bool isRegistered = [] {
        qDBusRegisterMetaType<ZELEvent::Argument>();
        qDBusRegisterMetaType<Arguments>();
        return true;
    }();
}

} // namespace

std::optional<QDBusMessage> encodeEvent(const QString &path, const ZELEvent &event)
{
    const auto hasBusType = [](const ZELEvent::Argument &argument) {
        return isBusType(argument.value);
    };
    const Arguments &arguments = event.getArguments();
    if (!std::all_of(arguments.cbegin(), arguments.cend(), hasBusType))
        return std::nullopt;
    registerArguments();
    QDBusMessage message = QDBusMessage::createSignal(path, eventsInterface(), eventSignal());
    message << event.getEvtName() << QVariant::fromValue(arguments);
    return message;
}

std::optional<ZELEvent> decodeEvent(const QDBusMessage &message)
{
    if (message.signature() != QLatin1String("sa(svb)"))
        return std::nullopt;
    const QList<QVariant> parts = message.arguments();
    ZELEvent event;
    event.setEvtName(parts.at(0).toString());
    event.setArguments(qdbus_cast<Arguments>(parts.at(1)));
    return event;
}

} // namespace zel
