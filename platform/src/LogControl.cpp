#include "LogControl.h"

#include "LogLevelNames.h"
#include "LogStream.h"
#include "zelcore/ZELLogger.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVariant>

#include <algorithm>
#include <optional>

namespace zel {
namespace {

const QLatin1String LogControlInterface("org.freedesktop.LogControl1");
const QLatin1String PropertiesInterface("org.freedesktop.DBus.Properties");
const QLatin1String IntrospectableInterface("org.freedesktop.DBus.Introspectable");
const QLatin1String PeerInterface("org.freedesktop.DBus.Peer");

const QLatin1String LevelProperty("LogLevel");
const QLatin1String TargetProperty("LogTarget");
const QLatin1String IdentifierProperty("SyslogIdentifier");

const QLatin1String Introspection(
    R"(  <interface name="org.freedesktop.LogControl1">
    <property name="LogLevel" type="s" access="readwrite">
      <annotation name="org.freedesktop.DBus.Property.EmitsChangedSignal" value="false"/>
      <annotation name="org.freedesktop.systemd1.Privileged" value="true"/>
    </property>
    <property name="LogTarget" type="s" access="readwrite">
      <annotation name="org.freedesktop.DBus.Property.EmitsChangedSignal" value="false"/>
      <annotation name="org.freedesktop.systemd1.Privileged" value="true"/>
    </property>
    <property name="SyslogIdentifier" type="s" access="read">
      <annotation name="org.freedesktop.DBus.Property.EmitsChangedSignal" value="false"/>
    </property>
  </interface>
)");

QString logTarget()
{
    return isStderrTheJournal() ? QStringLiteral("journal") : QStringLiteral("console");
}

QVariantMap properties()
{
    return {{LevelProperty, logLevelName(ZELLogger::getConfiguredLevel())},
            {TargetProperty, logTarget()},
            {IdentifierProperty, QCoreApplication::applicationName()}};
}

// A name out of a call, as an answer repeats it. Whole, an answer could be larger than the call,
// and what is larger than the bus allows costs the sender its place on it.
QString quoted(const QString &name)
{
    constexpr int longest = 64;
    QString text = QLatin1Char('"') + name.left(longest);
    if (name.size() > longest)
        text += QLatin1String("...");
    return text += QLatin1Char('"');
}

// Which no other interface here has. The empty name stands for any interface.
bool hasProperties(const QString &interface)
{
    return interface.isEmpty() || interface == LogControlInterface;
}

QDBusMessage refuse(const QDBusMessage &call, QDBusError::ErrorType error, const QString &why)
{
    return call.createErrorReply(error, why);
}

// Told under the more talkative of the two levels: that the log grows quieter is in it, too.
void changeLevel(int level)
{
    const int former = ZELLogger::getConfiguredLevel();
    ZELLogger::setConfiguredLevel(std::max(former, level));
    if (level != former)
        logger().info(QStringLiteral("The log level changes from %1 to %2")
                          .arg(logLevelName(former), logLevelName(level)));
    ZELLogger::setConfiguredLevel(level);
}

QDBusMessage setLevel(const QDBusMessage &call, const QString &name)
{
    const std::optional<int> level = logLevelNamed(name);
    if (!level)
        return refuse(call, QDBusError::InvalidArgs,
                      QStringLiteral("There is no log level %1; there are %2")
                          .arg(quoted(name), logLevelNames().join(QStringLiteral(", "))));
    changeLevel(*level);
    return call.createReply();
}

QDBusMessage setTarget(const QDBusMessage &call, const QString &target)
{
    if (target == logTarget())
        return call.createReply();
    return refuse(call, QDBusError::NotSupported,
                  QStringLiteral("The log goes to the error output, which is the %1; it cannot be "
                                 "turned to %2")
                      .arg(logTarget(), quoted(target)));
}

bool isKnown(const QString &interface)
{
    return interface == LogControlInterface || interface == PropertiesInterface ||
           interface == IntrospectableInterface || interface == PeerInterface;
}

QDBusMessage refuseInterface(const QDBusMessage &call, const QString &interface)
{
    return refuse(call, QDBusError::UnknownInterface,
                  QStringLiteral("There is no interface %1 here").arg(quoted(interface)));
}

// Why the first arguments of a call, an interface and maybe a property, name nothing here.
std::optional<QDBusMessage> refuseNames(const QDBusMessage &call)
{
    const QVariantList arguments = call.arguments();
    const QString interface = arguments.value(0).toString();
    if (!interface.isEmpty() && !isKnown(interface))
        return refuseInterface(call, interface);
    if (arguments.size() < 2)
        return std::nullopt;
    const QString property = arguments.at(1).toString();
    if (hasProperties(interface) && properties().contains(property))
        return std::nullopt;
    return refuse(call, QDBusError::UnknownProperty,
                  QStringLiteral("There is no property %1 of the interface %2")
                      .arg(quoted(property), quoted(interface)));
}

QDBusMessage get(const QDBusMessage &call)
{
    const QVariant value = properties().value(call.arguments().at(1).toString());
    return call.createReply(QVariant::fromValue(QDBusVariant(value)));
}

QDBusMessage getAll(const QDBusMessage &call)
{
    const bool hasAny = hasProperties(call.arguments().at(0).toString());
    return call.createReply(QVariant(hasAny ? properties() : QVariantMap()));
}

QDBusMessage set(const QDBusMessage &call)
{
    const QString property = call.arguments().at(1).toString();
    if (property == IdentifierProperty)
        return refuse(call, QDBusError::PropertyReadOnly,
                      QStringLiteral("The property \"%1\" cannot be written").arg(property));
    const QVariant value = call.arguments().at(2).value<QDBusVariant>().variant();
    if (value.userType() != QMetaType::QString)
        return refuse(call, QDBusError::InvalidArgs,
                      QStringLiteral("The property \"%1\" is a text").arg(property));
    return property == LevelProperty ? setLevel(call, value.toString())
                                     : setTarget(call, value.toString());
}

struct Method
{
    QLatin1String interface;
    QLatin1String name;
    QLatin1String signature;
    QDBusMessage (*answer)(const QDBusMessage &call);
};

// The bus library answers Introspect itself once it is well formed, and Peer's methods in any case.
constexpr auto AnsweredByTheLibrary = nullptr;

const Method Methods[] = {
    {PropertiesInterface, QLatin1String("Get"), QLatin1String("ss"), get},
    {PropertiesInterface, QLatin1String("GetAll"), QLatin1String("s"), getAll},
    {PropertiesInterface, QLatin1String("Set"), QLatin1String("ssv"), set},
    {IntrospectableInterface, QLatin1String("Introspect"), QLatin1String(""), AnsweredByTheLibrary},
};

const Method *methodOf(const QDBusMessage &call)
{
    const auto isCalled = [&call](const Method &method) {
        return method.name == call.member() &&
               (call.interface().isEmpty() || call.interface() == method.interface);
    };
    const auto *const found = std::find_if(std::begin(Methods), std::end(Methods), isCalled);
    return found != std::end(Methods) ? found : nullptr;
}

// Nothing for a call that the bus library answers.
std::optional<QDBusMessage> answer(const QDBusMessage &call)
{
    if (!call.interface().isEmpty() && !isKnown(call.interface()))
        return refuseInterface(call, call.interface());
    const Method *const method = methodOf(call);
    if (!method)
        return refuse(call, QDBusError::UnknownMethod,
                      QStringLiteral("There is no method \"%1\" of the interface \"%2\" here")
                          .arg(call.member(), call.interface()));
    if (call.signature() != method->signature)
        return refuse(call, QDBusError::InvalidArgs,
                      QStringLiteral("The arguments of \"%1\" are \"%2\", not \"%3\"")
                          .arg(call.member(), method->signature, call.signature()));
    if (method->answer == AnsweredByTheLibrary)
        return std::nullopt;
    const std::optional<QDBusMessage> refusal = refuseNames(call);
    return refusal ? *refusal : method->answer(call);
}

} // namespace

QString LogControl::path()
{
    return QStringLiteral("/org/freedesktop/LogControl1");
}

QString LogControl::introspect(const QString & /*path*/) const
{
    return Introspection;
}

bool LogControl::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    const std::optional<QDBusMessage> reply = answer(message);
    if (!reply)
        return false;
    if (message.isReplyRequired() && !connection.send(*reply))
        logger().warning(QStringLiteral("Cannot answer a call of LogControl1"));
    return true;
}

} // namespace zel
