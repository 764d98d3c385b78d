#include "LogControl.h"

#include "BusObject.h"
#include "LogStream.h"
#include "zelcore/ZELLogger.h"

#include <QCoreApplication>
#include <QDBusError>

#include <algorithm>

namespace zel {
namespace {

const QString LevelProperty = QStringLiteral("LogLevel");
const QString TargetProperty = QStringLiteral("LogTarget");
const QString IdentifierProperty = QStringLiteral("SyslogIdentifier");

// The names of the levels 0 to 7.
const QStringList LevelNames{QStringLiteral("emerg"),   QStringLiteral("alert"),
                             QStringLiteral("crit"),    QStringLiteral("err"),
                             QStringLiteral("warning"), QStringLiteral("notice"),
                             QStringLiteral("info"),    QStringLiteral("debug")};

QVariantMap propertiesOf(const QString &interface)
{
    // The empty name stands for every interface.
    if (!interface.isEmpty() && interface != QLatin1String("org.freedesktop.LogControl1"))
        return {};
    return {{LevelProperty, LevelNames.value(ZELLogger::getConfiguredLevel())},
            {TargetProperty,
             isStderrTheJournal() ? QStringLiteral("journal") : QStringLiteral("console")},
            {IdentifierProperty, QCoreApplication::applicationName()}};
}

} // namespace

LogControl::LogControl(BusObject &object) : QDBusAbstractAdaptor(&object), m_object(object) {}

QString LogControl::path()
{
    return QStringLiteral("/org/freedesktop/LogControl1");
}

QDBusVariant LogControl::Get(const QString &interface, const QString &property)
{
    const QVariant value = propertiesOf(interface).value(property);
    if (!value.isValid())
        m_object.answerWithError(QDBusError::UnknownProperty,
                                 QStringLiteral("There is no such property"));
    return QDBusVariant(value);
}

QVariantMap LogControl::GetAll(const QString &interface)
{
    const QVariantMap properties = propertiesOf(interface);
    if (properties.isEmpty())
        m_object.answerWithError(QDBusError::UnknownInterface,
                                 QStringLiteral("There is no such interface with properties"));
    return properties;
}

void LogControl::Set(const QString &interface, const QString &property, const QDBusVariant &value)
{
    const QVariant current = propertiesOf(interface).value(property);
    if (!current.isValid())
        m_object.answerWithError(QDBusError::UnknownProperty,
                                 QStringLiteral("There is no such property"));
    else if (property == IdentifierProperty)
        m_object.answerWithError(QDBusError::PropertyReadOnly,
                                 QStringLiteral("The identifier cannot be changed"));
    else if (property == LevelProperty)
        setLevel(value.variant());
    else if (value.variant() != current)
        m_object.answerWithError(
            QDBusError::NotSupported,
            QStringLiteral("The log goes to the error output, which cannot be changed"));
}

void LogControl::setLevel(const QVariant &name)
{
    // A list of one text would convert to that text.
    const bool isText = name.userType() == QMetaType::QString;
    const int level = isText ? static_cast<int>(LevelNames.indexOf(name.toString())) : -1;
    if (level < 0)
        return m_object.answerWithError(QDBusError::InvalidArgs,
                                        QStringLiteral("The log level must be one of ") +
                                            LevelNames.join(QStringLiteral(", ")));
    const int former = ZELLogger::getConfiguredLevel();
    // Logged at the higher of the two levels: the line must appear also when less is logged now.
    ZELLogger::setConfiguredLevel(std::max(former, level));
    if (level != former)
        logger().info(QStringLiteral("The log level changes from %1 to %2")
                          .arg(LevelNames.value(former), LevelNames.value(level)));
    ZELLogger::setConfiguredLevel(level);
}

} // namespace zel
