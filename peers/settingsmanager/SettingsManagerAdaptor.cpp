#include "SettingsManagerAdaptor.h"

#include "SettingsDirectory.h"
#include "SettingsManager.h"

#include <zelcore/ZELLogger.h>

#include <QDBusConnection>

namespace {

void answerUnknown(const QString &name, const QDBusMessage &call)
{
    call.setDelayedReply(true);
    const QDBusMessage error =
        call.createErrorReply(QStringLiteral("com.velmora.Tessaro.Error.UnknownSetting"),
                              QStringLiteral("There is no setting \"%1\"").arg(name));
    if (!QDBusConnection::systemBus().send(error))
        logger().error(QStringLiteral("Cannot answer the call for the setting \"%1\"").arg(name));
}

} // namespace

SettingsManagerAdaptor::SettingsManagerAdaptor(SettingsManager &module,
                                               const SettingsDirectory &directory)
    : QDBusAbstractAdaptor(&module), m_directory(directory)
{
}

QString SettingsManagerAdaptor::getSettingValue(const QString &name, const QDBusMessage &call)
{
    const auto value = m_directory.read(name);
    if (!value)
        answerUnknown(name, call);
    return value.value_or(QString());
}

void SettingsManagerAdaptor::setSettingValue(const QString &name, const QString &value,
                                             const QDBusMessage &call)
{
    if (!m_directory.write(name, value))
        answerUnknown(name, call);
}
