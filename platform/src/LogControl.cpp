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
    // The empty name means all interfaces.
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
    // QVariant would convert a list with one text to that text.
    const bool isText = name.userType() == QMetaType::QString;
    const int level = isText ? static_cast<int>(LevelNames.indexOf(name.toString())) : -1;
    if (level < 0)
        return m_object.answerWithError(QDBusError::InvalidArgs,
                                        QStringLiteral("The log level must be one of ") +
                                            LevelNames.join(QStringLiteral(", ")));
    const int oldLevel = ZELLogger::getConfiguredLevel();
    // The higher of both levels applies to this line, so that it is logged even if the level
    // decreases.
    ZELLogger::setConfiguredLevel(std::max(oldLevel, level));
    if (level != oldLevel)
        logger().info(QStringLiteral("The log level changes from %1 to %2")
                          .arg(LevelNames.value(oldLevel), LevelNames.value(level)));
    ZELLogger::setConfiguredLevel(level);
}

} // namespace zel
